#include "numtext/decimal_digits.h"

#include "core/missing.h"
#include "numtext/powers_of_ten.h"
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

constexpr std::uint64_t s_integer_powers[] = {
    1,
    10,
    100,
    1'000,
    10'000,
    100'000,
    1'000'000,
    10'000'000,
    100'000'000,
    1'000'000'000,
    10'000'000'000,
    100'000'000'000,
    1'000'000'000'000,
    10'000'000'000'000,
    100'000'000'000'000,
    1'000'000'000'000'000,
    10'000'000'000'000'000,
};
constexpr int s_quick_limit = 15;

// The value rounded to `limit` digits, as an integer of that many digits.
struct ScaledInteger {
    std::uint64_t integer; // 0 where the quick way cannot tell
    int exponent;          // of its first digit
};

// The exponent of the first decimal digit of a normal number, or one more for the number next below a power of ten.
int decimal_exponent(std::uint64_t bits) noexcept
{
    const int binary = static_cast<int>(bits >> 52) - 1023;
    const int exponent = static_cast<int>((binary * std::int64_t{1292913986}) >> 32); // floor(log10(2^binary))
    const int next = exponent + 1;
    const std::uint64_t power = s_powers_of_ten[static_cast<std::size_t>(next - s_lowest_power)];
    return exponent + (bits >= (static_cast<std::uint64_t>(binary_exponent_of_ten(next) + 1022) << 52) + (power >> 11));
}

// The significand times a power of ten, whose integer part holds the digits. The product is short of the truth by less
// than 2 units of its last bit, so that only a remainder next to one half leaves the rounding open. A number next below
// a power of ten, scaled as if it were that power, misses it by less than half a unit and so is rounded to it.
ScaledInteger scale_quickly(std::uint64_t bits, int limit) noexcept
{
    const int binary = static_cast<int>(bits >> 52) - 1023, exponent = decimal_exponent(bits);
    const std::uint64_t significand = (bits | std::uint64_t{1} << 52) << 11;
    const int power = limit - 1 - exponent;
    const std::uint64_t product =
        upper_product(significand, s_powers_of_ten[static_cast<std::size_t>(power - s_lowest_power)]);
    const int shift = 62 - binary - binary_exponent_of_ten(power); // 12 to 63
    const std::uint64_t half = std::uint64_t{1} << (shift - 1), rest = product & (2 * half - 1);
    if (rest - (half - 1) <= 1)
        return {0, 0};
    const std::uint64_t integer = (product >> shift) + (rest > half);
    if (integer == s_integer_powers[limit])
        return {integer / 10, exponent + 1};
    return {integer, exponent};
}

// Eight digits as the bytes of a word, the first in the lowest byte.
std::uint64_t eight_digits(std::uint64_t integer) noexcept
{
    // Quotients by reciprocals, in lanes: two of four digits, four of two, eight of one.
    std::uint64_t lanes = integer / 10'000 | (integer % 10'000) << 32;
    const std::uint64_t hundreds = (lanes * 10'486 >> 20) & 0x0000007F0000007F;
    lanes = hundreds | (lanes - hundreds * 100) << 16;
    const std::uint64_t tens = (lanes * 103 >> 10) & 0x000F000F000F000F;
    return tens | (lanes - tens * 10) << 8;
}

void store(char* text, std::uint64_t digits) noexcept
{
    digits |= 0x3030303030303030;
    for (int i = 0; i < 8; ++i)
        text[i] = static_cast<char>(digits >> (8 * i) & 0xFF);
}

// Of an integer of `width` digits, at most 16.
DecimalDigits digits_of(std::uint64_t integer, int width, int exponent) noexcept
{
    constexpr std::uint64_t half = 100'000'000;
    integer *= s_integer_powers[16 - width];
    const std::uint64_t first = eight_digits(integer / half), second = eight_digits(integer % half);
    DecimalDigits result;
    store(result.digits, first);
    store(result.digits + 8, second);
    std::memset(result.digits + 16, '0', sizeof result.digits - 16);
    result.count = second != 0 ? 16 - std::countl_zero(second) / 8 : 8 - std::countl_zero(first) / 8;
    result.exponent = exponent;
    return result;
}

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
    constexpr std::uint64_t smallest_normal = std::uint64_t{1} << 52, close_to_overflow = bits_of(1e308);
    const std::uint64_t magnitude = bits_of(value) & ~(std::uint64_t{1} << 63);
    if (magnitude == 0)
        return {{'0', '0', '0', '0', '0', '0', '0', '0', '0', '0', '0', '0'}, 1, 0};
    if (limit <= s_quick_limit && magnitude >= smallest_normal && magnitude < close_to_overflow)
        if (const auto scaled = scale_quickly(magnitude, limit); scaled.integer != 0)
            return digits_of(scaled.integer, limit, scaled.exponent);
    return round_carefully(std::bit_cast<double>(magnitude), limit);
}

} // namespace qmml
