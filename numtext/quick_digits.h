// The digits of most numbers, by integer arithmetic and a few products.
#pragma once

#include "core/missing.h"
#include "numtext/digit_words.h"
#include "numtext/powers_of_ten.h"
#include "platform/wide_product.h"

#include <bit>
#include <cstddef>
#include <cstdint>

namespace qmml {

inline constexpr int s_quick_digits = 15;

// What shortest_digits gives, for at most s_quick_digits: each a byte of 0 to 9, and zeros behind them.
struct PackedDigits {
    SixteenBytes digits;
    int count; // 0 where the quick way cannot tell
    int exponent;
};

inline constexpr std::uint64_t s_integer_powers[] = {
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
// The value rounded to `limit` digits, as an integer of that many digits.
struct ScaledInteger {
    std::uint64_t integer; // 0 where the quick way cannot tell
    int exponent;          // of its first digit
};

// The exponent of the first decimal digit of a normal number, or one more for the number next below a power of ten.
inline int decimal_exponent(std::uint64_t bits) noexcept
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
inline ScaledInteger scale_quickly(std::uint64_t bits, int limit) noexcept
{
    const int binary = static_cast<int>(bits >> 52) - 1023, exponent = decimal_exponent(bits);
    const std::uint64_t significand = (bits | std::uint64_t{1} << 52) << 11;
    const int power = limit - 1 - exponent;
    const std::uint64_t product =
        platform::wide_product(significand, s_powers_of_ten[static_cast<std::size_t>(power - s_lowest_power)]).high;
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
inline std::uint64_t eight_digits(std::uint64_t integer) noexcept
{
    // Quotients by reciprocals, in lanes: two of four digits, four of two, eight of one.
    std::uint64_t lanes = integer / 10'000 | (integer % 10'000) << 32;
    const std::uint64_t hundreds = (lanes * 10'486 >> 20) & 0x0000007F0000007F;
    lanes = hundreds | (lanes - hundreds * 100) << 16;
    const std::uint64_t tens = (lanes * 103 >> 10) & 0x000F000F000F000F;
    return tens | (lanes - tens * 10) << 8;
}

// Of an integer of `width` digits, at most 16.
inline PackedDigits digits_of(std::uint64_t integer, int width, int exponent) noexcept
{
    constexpr std::uint64_t half = 100'000'000;
    integer *= s_integer_powers[16 - width];
    const std::uint64_t first = eight_digits(integer / half), rest = integer % half;
    if (rest == 0)
        return {{first, 0}, 8 - std::countl_zero(first) / 8, exponent};
    const std::uint64_t second = eight_digits(rest);
    return {{first, second}, 16 - std::countl_zero(second) / 8, exponent};
}

// Any value and limit.
inline PackedDigits quick_digits(double value, int limit) noexcept
{
    constexpr std::uint64_t smallest_normal = std::uint64_t{1} << 52, close_to_overflow = bits_of(1e308);
    const std::uint64_t magnitude = bits_of(value) & ~(std::uint64_t{1} << 63);
    if (magnitude - smallest_normal >= close_to_overflow - smallest_normal || limit > s_quick_digits)
        return {{0, 0}, magnitude == 0, 0};
    const auto scaled = scale_quickly(magnitude, limit);
    return scaled.integer != 0 ? digits_of(scaled.integer, limit, scaled.exponent) : PackedDigits{};
}

} // namespace qmml
