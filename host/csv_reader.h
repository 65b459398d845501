// Comma-separated records, one at a time, in memory that does not grow with the file.
#pragma once

#include <cstddef>
#include <cstdio>
#include <string>
#include <string_view>
#include <vector>

namespace qmml::host {

// The views are good until the next record is read.
struct CsvRecord {
    std::string_view text;                // without its line end
    std::string_view line_end;            // "\n", "\r\n", or empty behind the last record
    std::vector<std::string_view> fields; // as written, quotes included
    std::size_t line = 0;                 // where it begins, from 1
};

// Quoting follows RFC 4180: a field in quotes may hold delimiters, line ends and doubled quotes. A quote inside a field
// that does not begin with one is an ordinary character. A byte-order mark is skipped.
class CsvReader {
public:
    static constexpr std::size_t s_record_limit = std::size_t{16} << 20;

    CsvReader(const std::string& path, char delimiter); // "-": standard input
    CsvReader(const CsvReader&) = delete;
    CsvReader& operator=(const CsvReader&) = delete;
    ~CsvReader();

    bool next(CsvRecord& record); // false at the end of the file
    bool has_byte_order_mark() const noexcept { return m_byte_order_mark; }
    unsigned long long bytes_read() const noexcept { return m_bytes; }
    const std::string& name() const noexcept { return m_name; }

    [[noreturn]] void fail_at(std::size_t line, const std::string& what) const;

private:
    bool fill();
    void skip_byte_order_mark();
    void end_field(std::size_t position);

    std::string m_name;
    std::FILE* m_file;
    char m_delimiter;
    bool m_byte_order_mark = false;
    std::vector<char> m_buffer;
    std::size_t m_begin = 0, m_end = 0; // what is read and not yet handed out
    std::size_t m_line = 1;
    unsigned long long m_bytes = 0;
    std::vector<std::size_t> m_field_ends; // offsets from m_begin, which survive a refill
};

std::string unquoted(std::string_view field);
std::string quoted_if_needed(std::string_view text, char delimiter);

} // namespace qmml::host
