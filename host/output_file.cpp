#include "host/output_file.h"

#include "host/error.h"
#include "host/platform/process.h"

#include <cerrno>
#include <filesystem>

namespace qmml::host {

namespace fs = std::filesystem;

OutputFile::OutputFile(const std::string& path) : m_name(path)
{
    if (path.empty() || path == "-") {
        m_name = "standard output";
        m_file = stdout;
        return;
    }
    std::error_code error;
    const fs::file_status status = fs::status(path, error);
    if (fs::is_directory(status))
        throw Error("cannot write " + m_name + ": it is a directory");
    if (fs::exists(status) && !fs::is_regular_file(status)) {
        m_file = std::fopen(path.c_str(), "wb");
        if (!m_file)
            fail(errno);
        return;
    }
    m_target = path;
    if (fs::exists(status)) {
        // Moving a file into place would succeed even where the one that stands there is write-protected.
        if (std::FILE* existing = std::fopen(path.c_str(), "r+b"))
            std::fclose(existing);
        else
            fail(errno);
        m_target = fs::canonical(path, error).string();
        if (error)
            fail(error.value());
    }
    open_temporary();
    if (fs::exists(status))
        fs::permissions(m_temporary, status.permissions(), error); // better the default ones than no result
}

void OutputFile::open_temporary()
{
    const fs::path folder = fs::path(m_target).parent_path();
    for (int attempt = 0; !m_file && attempt < 1000; ++attempt) {
        m_temporary = (folder / (".qmml-" + std::to_string(attempt) + ".part")).string();
        m_file = std::fopen(m_temporary.c_str(), "wbx");
        if (!m_file && errno != EEXIST)
            break;
    }
    if (!m_file) {
        m_temporary.clear();
        fail(errno);
    }
    remove_on_interrupt(m_temporary.c_str());
}

OutputFile::~OutputFile()
{
    if (m_file && m_file != stdout)
        std::fclose(m_file);
    if (!m_temporary.empty()) {
        std::remove(m_temporary.c_str());
        remove_on_interrupt(nullptr);
    }
}

void OutputFile::write(std::string_view text)
{
    if (std::fwrite(text.data(), 1, text.size(), m_file) != text.size())
        fail(errno);
}

void OutputFile::commit()
{
    if (std::fflush(m_file) != 0)
        fail(errno);
    if (m_file == stdout)
        return;
    std::FILE* const file = m_file;
    m_file = nullptr;
    if (std::fclose(file) != 0)
        fail(errno);
    if (m_temporary.empty())
        return;
    if (std::rename(m_temporary.c_str(), m_target.c_str()) != 0)
        fail(errno);
    remove_on_interrupt(nullptr);
    m_temporary.clear();
}

void OutputFile::fail(int number) const
{
    if (m_file == stdout && number == EPIPE)
        throw ClosedPipe{};
    fail_with_errno("cannot write " + m_name, number);
}

void write_to_stdout(std::string_view text)
{
    OutputFile out("-");
    out.write(text);
    out.commit();
}

} // namespace qmml::host
