// Strings in archives: any bytes load without harm or undue memory, and what was loaded survives storing.
#include "fuzz/fuzz_input.h"

#include <algorithm>
#include <cstring>
#include <qmml/numtext.h>
#include <qmml/platform.h>

using namespace qmml::fuzz;

namespace {

class MemorySink : public CArchiveSink {
public:
    explicit MemorySink(std::string bytes) : m_bytes(std::move(bytes)) {}
    void Write(const void* data, std::size_t size) override { m_bytes.append(static_cast<const char*>(data), size); }
    std::size_t Read(void* data, std::size_t size) override
    {
        // Seven at a time: archives have to cope with pieces.
        const std::size_t given = std::min({size, m_bytes.size() - m_at, std::size_t{7}});
        if (given > 0)
            std::memcpy(data, m_bytes.data() + m_at, given);
        m_at += given;
        return given;
    }

private:
    std::string m_bytes;
    std::size_t m_at = 0;
};

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    MemorySink source(std::string(reinterpret_cast<const char*>(data), size));
    CArchive loading(source, CArchive::load);
    CString text;
    CStrIntlStg number;
    loading >> text >> number;
    require(text.GetText().size() <= size);

    MemorySink copy("");
    CArchive storing(copy, CArchive::store);
    storing << text << number;
    CArchive reloading(copy, CArchive::load);
    CString text_again;
    CStrIntlStg number_again;
    reloading >> text_again >> number_again;
    require(text_again.GetText() == text.GetText() && number_again.GetLength() == number.GetLength());
    return 0;
}
