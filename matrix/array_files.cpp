// Matrix files, and the functions that other hosts' data files once needed.
#include "core/block.h"
#include "matrix/array_call.h"
#include "matrix/blocks.h"
#include "matrix/matrix_file.h"
#include "numtext/settings.h"
#include "platform/float_guard.h"

#include <qmml/core.h>
#include <qmml/matrix.h>
#include <qmml/numtext.h>

using namespace qmml;
using namespace qmml::matrix;

namespace {

// The separator must not change within a file.
class NumberTextLock {
public:
    NumberTextLock() noexcept { IniConLock(); }
    NumberTextLock(const NumberTextLock&) = delete;
    NumberTextLock& operator=(const NumberTextLock&) = delete;
    ~NumberTextLock() { IniConRelease(); }
};

int fail(Error error) noexcept
{
    report(error);
    return 0;
}

} // namespace

int QelMatrixWrite(const char* file, const double* A, int aR, int aC)
{
    if (!accepted({{A, {aR, aC}}}, {}))
        return 0;
    platform::File output(file, platform::File::Access::write);
    if (!output.is_open()) {
        if (!output.in_use())
            platform::remove_file(file);
        return fail(Error::file_not_opened);
    }
    const platform::FloatGuard guard; // for the flags
    const NumberTextLock lock;
    IniCon__(QMML_GENERAL_FORMAT, 15, 15);
    const bool written = write_matrix(output, A, {aR, aC}, decimal_separator());
    return output.close() && written ? 1 : fail(Error::file_not_written);
}

int QelMatrixRead(const char* file, double* A, int aR, int aC)
{
    if (!accepted({{A, {aR, aC}}}, {}))
        return 0;
    Block<char> line(s_line_room);
    if (!line)
        return fail(Error::out_of_memory);
    platform::File input(file, platform::File::Access::read);
    if (!input.is_open())
        return fail(Error::file_not_opened);
    fill_block(A, aR, {aR, aC}, 0.0);
    const platform::FloatGuard guard;
    const NumberTextLock lock;
    Ini_GN(13);
    return read_matrix(input, A, {aR, aC}, line.data());
}

int QelMatrixDisplay(const double*, const char*, int, int, int)
{
    return 1;
}

int QelMatrixReadFromDataFile(const char*, const int*, int, int, double*, int, int, int)
{
    return 1;
}

int QelMatrixSaveAsDataFile(const char*, const double*, int, int)
{
    return 1;
}
