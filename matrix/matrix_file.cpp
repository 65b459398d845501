#include "matrix/matrix_file.h"

#include "numtext/format_number.h"
#include "numtext/scan_number.h"

#include <algorithm>
#include <cstring>

namespace qmml::matrix {
namespace {

constexpr int s_width = 15, s_digits = 15;

// Gathers text, so that the file sees few and long writes.
class Writer {
public:
    explicit Writer(platform::File& file) noexcept : m_file(file) {}

    bool number(double value, char decimal) noexcept
    {
        if (m_used + s_longest_field > s_room && !flush())
            return false;
        m_used += format_general(value, s_width, s_digits, decimal, m_text + m_used);
        while (m_text[m_used - 1] == ' ')
            --m_used;
        return true;
    }
    // Right behind a number, which has left room for it.
    void put(char c) noexcept { m_text[m_used++] = c; }

    bool flush() noexcept
    {
        const bool written = m_file.write(m_text, static_cast<std::size_t>(m_used));
        m_used = 0;
        return written;
    }

private:
    static constexpr int s_room = 16384, s_longest_field = s_longest_number + 4; // CR, LF and a zero

    platform::File& m_file;
    int m_used = 0;
    char m_text[s_room];
};

// The lines of a file, the start of each up to what the line buffer holds.
class Lines {
public:
    Lines(platform::File& file, char* line) noexcept : m_file(file), m_line(line) {}

    // False at the end of the file. The characters stand in the line buffer up to length().
    bool next() noexcept
    {
        m_length = 0;
        m_line[0] = '\0';
        for (bool any = false;; any = true) {
            if (m_from == m_to && !fill())
                return any;
            if (m_line_feed < m_from)
                m_line_feed = find_or_end(m_from, m_to, '\n');
            const char* const end = find_or_end(m_from, m_line_feed, '\r');
            keep(m_from, end);
            m_from = end;
            if (end != m_to) {
                ++m_from;
                return true;
            }
        }
    }
    int length() const noexcept { return m_length; }

private:
    static constexpr int s_longest = s_line_room - 1;

    // By the runtime's search, which takes many characters at a time.
    static const char* find_or_end(const char* from, const char* to, char c) noexcept
    {
        const void* const found = std::memchr(from, c, static_cast<std::size_t>(to - from));
        return found ? static_cast<const char*>(found) : to;
    }

    bool fill() noexcept
    {
        m_from = m_chunk;
        m_to = m_chunk + m_file.read(m_chunk, sizeof m_chunk);
        m_line_feed = find_or_end(m_from, m_to, '\n');
        return m_from != m_to;
    }

    void keep(const char* from, const char* to) noexcept
    {
        const auto count = static_cast<int>(std::min<std::ptrdiff_t>(to - from, s_longest - m_length));
        std::memcpy(m_line + m_length, from, static_cast<std::size_t>(count));
        m_length += count;
        m_line[m_length] = '\0';
    }

    platform::File& m_file;
    char* m_line;
    int m_length = 0;
    const char* m_from = nullptr;
    const char* m_to = nullptr;
    const char* m_line_feed = nullptr; // the next one, or the end of the chunk
    char m_chunk[16384];
};

bool in_number(char c) noexcept
{
    return (c >= '0' && c <= '9') || c == 'E' || c == '+' || c == '-' || c == '.' || c == 'e';
}

void read_row(const char* at, const char* end, double* row, Shape shape) noexcept
{
    const auto is_blank = [](char c) { return c == ' '; };
    for (int j = 0; j < shape.cols && at != end; ++j) {
        const char* const field = std::find_if_not(at, end, is_blank);
        // No field holds a separator other than the period. The element keeps its zero where this is no number.
        const auto number = scan_number(field, '.');
        const char* number_end = number.end;
        if (number_end != end && in_number(*number_end))
            number_end = std::find_if_not(number_end, end, in_number);
        else if (number_end != field)
            row[std::int64_t{j} * shape.rows] = number.value;
        at = std::find_if_not(number_end, end, is_blank);
        if (at != end && !in_number(*at))
            ++at;
    }
}

} // namespace

bool write_matrix(platform::File& file, const double* a, Shape shape, char decimal) noexcept
{
    Writer writer(file);
    for (int i = 0; i < shape.rows; ++i)
        for (int j = 0; j < shape.cols; ++j) {
            if (!writer.number(a[std::int64_t{j} * shape.rows + i], decimal))
                return false;
            if (j + 1 < shape.cols) {
                writer.put('\t');
            } else {
                writer.put('\r');
                writer.put('\n');
            }
        }
    return writer.flush();
}

bool read_matrix(platform::File& file, double* a, Shape shape, char* buffer) noexcept
{
    Lines lines(file, buffer);
    bool any = false;
    for (int i = 0; (i < shape.rows || !any) && lines.next();) {
        any = true;
        if (lines.length() == 0 || i >= shape.rows)
            continue;
        if (shape.size() > 0)
            read_row(buffer, buffer + lines.length(), a + i, shape);
        ++i;
    }
    return any;
}

} // namespace qmml::matrix
