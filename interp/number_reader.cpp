#include "interp/number_reader.h"

#include <charconv>
#include <limits>
#include <system_error>

namespace qmml::interp {

static bool is_digit(char c) noexcept
{
    return c >= '0' && c <= '9';
}

// Whether a number known to be out of range is too large rather than too small: the place of its first significant
// digit, moved by the exponent.
static bool is_huge(const char* text, const char* end) noexcept
{
    long long place = 0;
    bool significant = false, fraction = false;
    const char* p = text;
    for (; p != end && (is_digit(*p) || *p == '.'); ++p) {
        if (*p == '.') {
            fraction = true;
            continue;
        }
        significant = significant || *p != '0';
        if (significant && !fraction)
            ++place;
        else if (!significant && fraction)
            --place;
    }
    if (p == end)
        return place > 0;
    ++p; // the e
    const bool negative = *p == '-';
    if (*p == '-' || *p == '+')
        ++p;
    long long exponent = 0;
    for (; p != end && exponent < 100'000'000'000; ++p)
        exponent = exponent * 10 + (*p - '0');
    return place + (negative ? -exponent : exponent) > 0;
}

NumberText read_number(const char* text, const char* text_end) noexcept
{
    // One digit is the most frequent number of all.
    if (is_digit(*text) && (text + 1 == text_end || !(is_digit(text[1]) || text[1] == '.' || (text[1] | 0x20) == 'e')))
        return {static_cast<double>(*text - '0'), text + 1};
    if (!is_digit(*text) && *text != '.')
        return {0.0, text};
    double value = 0.0;
    const auto result = std::from_chars(text, text_end, value, std::chars_format::general);
    if (result.ec == std::errc::result_out_of_range)
        value = is_huge(text, result.ptr) ? std::numeric_limits<double>::infinity() : 0.0;
    return {value, result.ptr};
}

} // namespace qmml::interp
