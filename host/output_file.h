// Where the result goes: standard output, or a file that appears whole or not at all.
#pragma once

#include <cstdio>
#include <string>
#include <string_view>

namespace qmml::host {

// A regular file is written beside its final place and moved there by commit(); without commit() nothing is left
// behind. Devices and pipes are written to directly.
class OutputFile {
public:
    explicit OutputFile(const std::string& path); // empty or "-": standard output
    OutputFile(const OutputFile&) = delete;
    OutputFile& operator=(const OutputFile&) = delete;
    ~OutputFile();

    void write(std::string_view text);
    void commit();

private:
    void open_temporary();
    [[noreturn]] void fail(int number) const;

    std::string m_name; // as the user wrote it, for messages
    std::string m_target, m_temporary;
    std::FILE* m_file = nullptr;
};

void write_to_stdout(std::string_view text);

} // namespace qmml::host
