#include "numtext/scan_number.h"

#include "core/character.h"
#include "core/missing.h"
#include "numtext/powers_of_ten.h"
#include "platform/float_guard.h"

#include <bit>
#include <charconv>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <limits>
#include <system_error>

namespace qmml {
namespace {

constexpr std::uint64_t s_exact_integer_limit = std::uint64_t{1} << 53;
constexpr long long s_exact_digits = 19; // what 64 bits hold

// No double and no midpoint of two has more significant digits than this; what follows matters only as not being 0.
constexpr int s_significant_digits = 768;

constexpr bool is_digit(char c) noexcept
{
    return c >= '0' && c <= '9';
}

// Eight digits at a time: tells whether all are digits, and then adds neighbours up to pairs, fours and the whole.
bool are_eight_digits(std::uint64_t eight) noexcept
{
    return (((eight + 0x4646464646464646) | (eight - 0x3030303030303030)) & 0x8080808080808080) == 0;
}

std::uint64_t value_of_eight(std::uint64_t eight) noexcept
{
    eight -= 0x3030303030303030;
    eight = (eight * 10 + (eight >> 8)) & 0x00FF00FF00FF00FF;
    eight = (eight * 100 + (eight >> 16)) & 0x0000FFFF0000FFFF;
    return (eight * 10'000 + (eight >> 32)) & 0xFFFFFFFF;
}

// Digits and at most one separator.
struct Mantissa {
    const char* begin;
    const char* end;
    std::uint64_t integer;     // all digits as one number, wrapped round beyond 64 bits
    long long digits;          // leading zeros included
    long long fraction_digits; // those behind the separator
};

Mantissa scan_mantissa(const char* text, const char* end, char decimal) noexcept
{
    Mantissa result = {text, text, 0, 0, 0};
    const char* p = text;
    const auto take_digits = [&] {
        const char* const start = p;
        if constexpr (std::endian::native == std::endian::little) {
            for (std::uint64_t eight; end - p >= 8; p += 8) {
                std::memcpy(&eight, p, sizeof eight);
                if (!are_eight_digits(eight))
                    break;
                result.integer = result.integer * 100'000'000 + value_of_eight(eight);
            }
        }
        for (; p != end && is_digit(*p); ++p)
            result.integer = result.integer * 10 + static_cast<std::uint64_t>(*p - '0');
        result.digits += p - start;
        return p - start;
    };
    take_digits();
    if (p != end && (*p == '.' || *p == decimal)) {
        ++p;
        result.fraction_digits = take_digits();
    }
    result.end = p;
    return result;
}

// Kept to where sums with the length of any text stay in range.
long long scan_exponent(const char*& text, const char* end) noexcept
{
    constexpr long long limit = std::numeric_limits<long long>::max() / 1000;
    const char* p = text;
    if (p == end || to_lower(*p) != 'e')
        return 0;
    ++p;
    const bool negative = p != end && *p == '-';
    if (p != end && (*p == '-' || *p == '+'))
        ++p;
    if (p == end || !is_digit(*p))
        return 0; // the e belongs to something else
    long long exponent = 0;
    for (; p != end && is_digit(*p); ++p)
        if (exponent < limit)
            exponent = exponent * 10 + (*p - '0');
    text = p;
    return negative ? -exponent : exponent;
}

// The digits as an integer times a power of ten, in a form that the standard library reads whatever was the separator.
double convert_carefully(const Mantissa& mantissa, long long power) noexcept
{
    char text[s_significant_digits + 32];
    char* out = text;
    bool more = false;
    for (const char* p = mantissa.begin; p != mantissa.end; ++p) {
        if (!is_digit(*p) || (out == text && *p == '0'))
            continue;
        if (out - text < s_significant_digits) {
            *out++ = *p;
        } else {
            more |= *p != '0';
            ++power;
        }
    }
    if (out == text)
        return 0.0;
    if (more) {
        *out++ = '1';
        --power;
    }
    const long long magnitude = out - text + power;
    constexpr double infinity = std::numeric_limits<double>::infinity();
    if (magnitude > 400 || magnitude < -400)
        return magnitude > 0 ? infinity : 0.0;
    *out++ = 'e';
    out = std::to_chars(out, std::end(text), power).ptr;
    double value = 0.0;
    const platform::FloatGuard guard; // the result may be inexact
    if (std::from_chars(text, out, value).ec == std::errc::result_out_of_range)
        return magnitude > 0 ? infinity : 0.0;
    return value;
}

// integer * 10^power in integers, so without faults: the product is short of the truth by less than 2 units of its last
// bit. False where that leaves the rounding open, and outside the normal numbers.
bool scale_quickly(std::uint64_t integer, long long power, double& value) noexcept
{
    if (integer == 0 || power < s_lowest_power || power > s_highest_power)
        return false;
    const int zeros = std::countl_zero(integer);
    const std::uint64_t product =
        upper_product(integer << zeros, s_powers_of_ten[static_cast<std::size_t>(power - s_lowest_power)]);
    const int shift = (product >> 63) != 0 ? 11 : 10;
    const int exponent = binary_exponent_of_ten(static_cast<int>(power)) + shift + 53 - zeros;
    const std::uint64_t half = std::uint64_t{1} << (shift - 1), rest = product & (2 * half - 1);
    if (rest - (half - 1) <= 1 || exponent < -1022 || exponent > 1023)
        return false;
    const std::uint64_t significand = (product >> shift) + (rest > half);
    value = std::bit_cast<double>((static_cast<std::uint64_t>(exponent + 1022) << 52) + significand);
    return true;
}

double convert(const Mantissa& mantissa, long long power) noexcept
{
    if (mantissa.digits <= s_exact_digits) {
        if (mantissa.integer == 0 || (power == 0 && mantissa.integer <= s_exact_integer_limit))
            return static_cast<double>(mantissa.integer);
        if (double value; scale_quickly(mantissa.integer, power, value))
            return value;
    }
    return convert_carefully(mantissa, power);
}

const char* skip_blanks(const char* text, const char* end) noexcept
{
    while (text != end && is_white_space(*text))
        ++text;
    return text;
}

} // namespace

ScannedNumber scan_number(const char* text, const char* end, char decimal) noexcept
{
    const char* p = text;
    const bool negative = p != end && *p == '-';
    if (p != end && (*p == '-' || *p == '+'))
        ++p;
    const auto mantissa = scan_mantissa(p, end, decimal);
    if (mantissa.digits == 0)
        return text != end && *text == '.' ? ScannedNumber{s_missing, text + 1} : ScannedNumber{0.0, text};
    p = mantissa.end;
    const long long exponent = scan_exponent(p, end);
    const double magnitude = convert(mantissa, exponent - mantissa.fraction_digits);
    return {negative ? -magnitude : magnitude, p};
}

bool scan_field(const char* text, const char* end, char decimal, double& value) noexcept
{
    text = skip_blanks(text, end);
    if (text == end) {
        value = s_missing;
        return true;
    }
    const auto number = scan_number(text, end, decimal);
    if (number.end == text || skip_blanks(number.end, end) != end)
        return false;
    value = number.value;
    return true;
}

} // namespace qmml
