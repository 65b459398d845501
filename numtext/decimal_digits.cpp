#include "numtext/decimal_digits.h"

#include "core/missing.h"
#include "numtext/quick_digits.h"
#include "platform/float_guard.h"

#include <algorithm>
#include <bit>
#include <charconv>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <system_error>

namespace qmml {
namespace {

// What std::to_chars writes in scientific form.
struct ScientificText {
    char text[32];
    char* end;
};

// The next lower number of as many digits.
void decrease(ScientificText& number) noexcept
{
    char* p = std::find(number.text, number.end, 'e') - 1;
    for (; *p == '0' || *p == '.'; --p)
        if (*p == '0')
            *p = '9';
    --*p;
}

DecimalDigits split(const ScientificText& number) noexcept
{
    DecimalDigits result;
    std::memset(result.digits, '0', sizeof result.digits);
    result.count = 0;
    const char* p = number.text;
    for (; *p != 'e'; ++p)
        if (*p != '.')
            result.digits[result.count++] = *p;
    p += p[1] == '+' ? 2 : 1;
    std::from_chars(p, number.end, result.exponent);
    while (result.count > 1 && result.digits[result.count - 1] == '0')
        --result.count;
    return result;
}

// Through the standard library: rounded exactly, read back, and written as short as that number allows.
DecimalDigits round_carefully(double magnitude, int limit) noexcept
{
    ScientificText rounded, shortest;
    char* const last = std::end(rounded.text);
    rounded.end = std::to_chars(rounded.text, last, magnitude, std::chars_format::scientific, limit - 1).ptr;
    double value = magnitude;
    const platform::FloatGuard guard; // reading may be inexact
    if (std::from_chars(rounded.text, rounded.end, value).ec != std::errc()) {
        decrease(rounded); // only numbers rounded up to beyond the largest one get here
        std::from_chars(rounded.text, rounded.end, value);
    }
    shortest.end = std::to_chars(shortest.text, std::end(shortest.text), value, std::chars_format::scientific).ptr;
    return split(shortest);
}

} // namespace

DecimalDigits shortest_digits(double value, int limit) noexcept
{
    const auto quick = quick_digits(value, limit);
    if (quick.count == 0)
        return round_carefully(std::bit_cast<double>(bits_of(value) & ~(std::uint64_t{1} << 63)), limit);
    DecimalDigits result;
    store_bytes(result.digits, quick.digits.low | repeat('0'));
    store_bytes(result.digits + 8, quick.digits.high | repeat('0'));
    std::memset(result.digits + 16, '0', sizeof result.digits - 16);
    result.count = quick.count;
    result.exponent = quick.exponent;
    return result;
}

} // namespace qmml
