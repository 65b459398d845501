#include "host/csv_reader.h"

#include "host/error.h"

#include <algorithm>
#include <cerrno>
#include <cstring>

namespace qmml::host {

CsvReader::CsvReader(const std::string& path, char delimiter)
    : m_name(path == "-" ? "standard input" : path), m_file(path == "-" ? stdin : std::fopen(path.c_str(), "rb")),
      m_delimiter(delimiter)
{
    if (!m_file)
        fail_with_errno("cannot read " + m_name, errno);
    try {
        m_buffer.resize(std::size_t{1} << 18);
        skip_byte_order_mark();
    } catch (...) {
        if (m_file != stdin)
            std::fclose(m_file);
        throw;
    }
}

CsvReader::~CsvReader()
{
    if (m_file != stdin)
        std::fclose(m_file);
}

void CsvReader::skip_byte_order_mark()
{
    while (m_end < 3 && fill()) {
    }
    const std::string_view start(m_buffer.data(), m_end);
    if (start.starts_with("\xff\xfe") || start.starts_with("\xfe\xff"))
        throw Error(m_name + ": the file is in UTF-16; save it as UTF-8");
    m_byte_order_mark = start.starts_with("\xef\xbb\xbf");
    m_begin = m_byte_order_mark ? 3 : 0;
}

bool CsvReader::fill()
{
    if (m_begin > 0) {
        std::memmove(m_buffer.data(), m_buffer.data() + m_begin, m_end - m_begin);
        m_end -= m_begin;
        m_begin = 0;
    }
    if (m_end == m_buffer.size()) {
        if (m_end >= s_record_limit)
            fail_at(m_line, "the row is longer than 16 MiB; is a quote left open?");
        m_buffer.resize(std::min(2 * m_end, s_record_limit));
    }
    const std::size_t got = std::fread(m_buffer.data() + m_end, 1, m_buffer.size() - m_end, m_file);
    if (got == 0 && std::ferror(m_file))
        fail_with_errno("cannot read " + m_name, errno);
    m_end += got;
    m_bytes += got;
    return got > 0;
}

void CsvReader::end_field(std::size_t position)
{
    m_field_ends.push_back(position);
}

bool CsvReader::next(CsvRecord& record)
{
    enum class At { field_start, plain, in_quotes, behind_quotes, behind_quotes_and_return };
    At at = At::field_start;
    std::size_t position = 0, lines = 0;
    m_field_ends.clear();
    for (;; ++position) {
        if (m_begin + position == m_end && !fill()) {
            if (position == 0)
                return false;
            if (at == At::in_quotes)
                fail_at(m_line, "a quote that opens in this row is never closed");
            break;
        }
        const char c = m_buffer[m_begin + position];
        if (at == At::in_quotes) {
            if (c == '"')
                at = At::behind_quotes;
            else if (c == '\n')
                ++lines;
        } else if (c == '\n') {
            break;
        } else if (at == At::behind_quotes_and_return) {
            fail_at(m_line + lines, "text behind a closing quote");
        } else if (c == m_delimiter) {
            end_field(position);
            at = At::field_start;
        } else if (at == At::behind_quotes) {
            if (c != '"' && c != '\r')
                fail_at(m_line + lines, "text behind a closing quote");
            at = c == '"' ? At::in_quotes : At::behind_quotes_and_return;
        } else {
            at = at == At::field_start && c == '"' ? At::in_quotes : At::plain;
        }
    }

    const char* const start = m_buffer.data() + m_begin;
    const bool at_line_feed = m_begin + position < m_end;
    const std::size_t length = position - (position > 0 && start[position - 1] == '\r' ? 1 : 0);
    end_field(length);
    record.text = {start, length};
    record.line_end = at_line_feed ? std::string_view(start + length, position + 1 - length) : std::string_view();
    record.line = m_line;
    record.fields.clear();
    std::size_t field_start = 0;
    for (std::size_t end : m_field_ends) {
        record.fields.push_back(record.text.substr(field_start, end - field_start));
        field_start = end + 1;
    }
    m_begin += position + (at_line_feed ? 1 : 0);
    m_line += lines + 1;
    return true;
}

void CsvReader::fail_at(std::size_t line, const std::string& what) const
{
    throw Error(m_name + ", line " + std::to_string(line) + ": " + what);
}

std::string unquoted(std::string_view field)
{
    if (field.size() < 2 || field.front() != '"' || field.back() != '"')
        return std::string(field);
    std::string text;
    for (std::size_t i = 1; i + 1 < field.size(); ++i) {
        text += field[i];
        if (field[i] == '"')
            ++i; // the second of a pair
    }
    return text;
}

std::string quoted_if_needed(std::string_view text, char delimiter)
{
    const bool blank_at_an_end = text.starts_with(' ') || text.ends_with(' ');
    if (!blank_at_an_end && text.find_first_of("\"\r\n") == text.npos && text.find(delimiter) == text.npos)
        return std::string(text);
    std::string quoted = "\"";
    for (char c : text) {
        quoted += c;
        if (c == '"')
            quoted += '"';
    }
    return quoted + '"';
}

} // namespace qmml::host
