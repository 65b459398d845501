// The matrix file: any text is read without harm, and what was read is written and read again unchanged.
#include "fuzz/fuzz_input.h"

#include <qmml/matrix.h>
#include <vector>

using namespace qmml::fuzz;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    if (size == 0)
        return 0;
    const int rows = 1 + data[0] % 8, columns = 1 + data[0] / 8 % 8;
    const MemoryFile input(data + 1, size - 1);
    std::vector<double> a(static_cast<std::size_t>(rows * columns), -77), b = a;
    require(QelMatrixRead(input.name(), a.data(), rows, columns) == (size > 1));
    if (size == 1)
        return 0;
    const MemoryFile first, second;
    require(QelMatrixWrite(first.name(), a.data(), rows, columns) == 1);
    require(QelMatrixRead(first.name(), b.data(), rows, columns) == 1);
    require(QelMatrixWrite(second.name(), b.data(), rows, columns) == 1);
    require(first.text() == second.text());
    return 0;
}
