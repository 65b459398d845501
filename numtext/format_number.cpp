#include "numtext/format_number.h"

#include "core/missing.h"
#include "numtext/decimal_digits.h"

#include <algorithm>
#include <charconv>
#include <cstddef>
#include <cstring>

namespace qmml {
namespace {

// Lines are written with copies of fixed size, which go beyond what counts.
constexpr int s_slack = 32;

// A run that is nearly always short.
char* append_run(char* text, char c, int count) noexcept
{
    std::memset(text, c, 16);
    if (count > 16)
        std::memset(text + 16, c, static_cast<std::size_t>(count - 16));
    return text + count;
}

int fixed_length(const DecimalDigits& number) noexcept
{
    if (number.exponent < 0)
        return number.count + 1 - number.exponent; // 0.00ddd
    if (number.count <= number.exponent + 1)
        return number.exponent + 1; // ddd00
    return number.count + 1;
}

char* append_fixed(char* text, const DecimalDigits& number, char decimal) noexcept
{
    if (number.exponent < 0) {
        *text++ = '0';
        *text++ = decimal;
        text = append_run(text, '0', -1 - number.exponent);
        std::memcpy(text, number.digits, s_slack);
        return text + number.count;
    }
    const int whole = number.exponent + 1;
    std::memcpy(text, number.digits, s_slack);
    if (whole >= number.count)
        return append_run(text + number.count, '0', whole - number.count);
    text[whole] = decimal;
    std::memcpy(text + whole + 1, number.digits + whole, 16);
    return text + number.count + 1;
}

char* append_scientific(char* text, const DecimalDigits& number, char decimal) noexcept
{
    *text++ = number.digits[0];
    if (number.count > 1) {
        *text++ = decimal;
        std::memcpy(text, number.digits + 1, 16);
        text += number.count - 1;
    }
    *text++ = 'e';
    return std::to_chars(text, text + 4, number.exponent).ptr;
}

char* append_number(char* text, double value, int width, int digits, char decimal) noexcept
{
    if (is_nan(value)) {
        *text++ = '.';
        return text;
    }
    const bool negative = (bits_of(value) >> 63) != 0;
    *text = '-';
    text += negative;
    if (!is_finite(value)) {
        constexpr char infinity[] = {'1', 'e', '9', '9', '9'};
        std::memcpy(text, infinity, sizeof infinity);
        return text + sizeof infinity;
    }
    const auto number = shortest_digits(value, digits);
    return fixed_length(number) + negative <= width ? append_fixed(text, number, decimal)
                                                    : append_scientific(text, number, decimal);
}

} // namespace

int format_general(double value, int width, int digits, char decimal, char* text) noexcept
{
    char line[s_widest_field + s_slack];
    width = std::clamp(width, 0, s_widest_field);
    const char* end = append_number(line, value, width, std::clamp(digits, 1, s_most_digits), decimal);
    auto length = static_cast<int>(end - line);
    if (length < width) {
        append_run(line + length, ' ', width - length);
        length = width;
    }
    std::memcpy(text, line, static_cast<std::size_t>(length));
    text[length] = '\0';
    return length;
}

} // namespace qmml
