#include "numtext/scan_number.h"

#include "core/character.h"
#include "core/missing.h"
#include "numtext/powers_of_ten.h"
#include "platform/float_guard.h"
#include "platform/read_ahead.h"
#include "platform/wide_product.h"

#include <bit>
#include <charconv>
#include <cstddef>
#include <cstdint>
#include <iterator>
#include <limits>
#include <system_error>

namespace qmml {
namespace {

constexpr std::uint64_t s_exact_integer_limit = std::uint64_t{1} << 53;
constexpr unsigned s_exact_digits = 19; // what 64 bits hold

// No double and no midpoint of two has more significant digits than this; what follows matters only as not being 0.
constexpr int s_significant_digits = 768;

// Of what is no digit, more than 9.
constexpr unsigned digit_of(char c) noexcept
{
    return static_cast<unsigned>(c) - '0';
}

constexpr bool is_digit(char c) noexcept
{
    return digit_of(c) <= 9;
}

constexpr bool is_exponent_mark(char c) noexcept
{
    return (c | 0x20) == 'e';
}

constexpr bool is_separator(char c, char decimal) noexcept
{
    return c == '.' || c == decimal;
}

// Eight digits at a time: tells whether all are digits, and then adds neighbours up to pairs, fours and the whole.
constexpr bool are_eight_digits(std::uint64_t eight) noexcept
{
    return (((eight + 0x4646464646464646) | (eight - 0x3030303030303030)) & 0x8080808080808080) == 0;
}

constexpr std::uint64_t value_of_eight(std::uint64_t eight) noexcept
{
    eight -= 0x3030303030303030;
    eight = (eight * 10 + (eight >> 8)) & 0x00FF00FF00FF00FF;
    eight = (eight * 100 + (eight >> 16)) & 0x0000FFFF0000FFFF;
    return (eight * 10'000 + (eight >> 32)) & 0xFFFFFFFF;
}

// Where a text ends: at a known place, and then a zero stands for the character there,
class Bounded {
public:
    explicit Bounded(const char* end) noexcept : m_end(end) {}

    bool ended(const char* p) const noexcept { return p == m_end; }
    char at(const char* p) const noexcept { return p == m_end ? '\0' : *p; }
    bool has_eight(const char* p) const noexcept { return m_end - p >= 8; }

private:
    const char* m_end;
};

// or at a zero, which is no part of a number.
class Terminated {
public:
    bool ended(const char* p) const noexcept { return *p == '\0'; }
    char at(const char* p) const noexcept { return *p; }
    bool has_eight(const char* p) const noexcept { return platform::may_read_ahead(p, 8); }
};

// Digits and at most one separator.
struct Mantissa {
    const char* begin;
    const char* end;
    std::uint64_t integer;     // all digits as one number, wrapped round beyond 64 bits
    long long digits;          // leading zeros included
    long long fraction_digits; // those behind the separator
};

template <class Text>
[[gnu::always_inline]] inline const char* take_digits(const char* p, Text text, std::uint64_t& integer) noexcept
{
    for (unsigned digit; (digit = digit_of(text.at(p))) <= 9; ++p)
        integer = integer * 10 + digit;
    return p;
}

// Long fractions are common, other long runs are not.
template <class Text>
[[gnu::always_inline]] inline Mantissa scan_mantissa(const char* start, Text text, char decimal) noexcept
{
    std::uint64_t integer = 0;
    const char* p = take_digits(start, text, integer);
    if (!is_separator(text.at(p), decimal))
        return {start, p, integer, p - start, 0};
    const char* const fraction = ++p;
    if (std::endian::native == std::endian::little && text.has_eight(p))
        if (const std::uint64_t eight = platform::read_ahead(p); are_eight_digits(eight)) {
            integer = integer * 100'000'000 + value_of_eight(eight);
            p += 8;
        }
    p = take_digits(p, text, integer);
    return {start, p, integer, p - start - 1, p - fraction};
}

// Kept to where sums with the length of any text stay in range.
template <class Text>
long long scan_exponent(const char*& start, Text text) noexcept
{
    constexpr long long limit = std::numeric_limits<long long>::max() / 1000;
    const char* p = start;
    if (!is_exponent_mark(text.at(p)))
        return 0;
    const char sign = text.at(++p);
    p += sign == '-' || sign == '+';
    if (!is_digit(text.at(p)))
        return 0; // the e belongs to something else
    long long exponent = 0;
    for (; is_digit(text.at(p)); ++p)
        if (exponent < limit)
            exponent = exponent * 10 + digit_of(*p);
    start = p;
    return sign == '-' ? -exponent : exponent;
}

// The digits as an integer times a power of ten, in a form that the standard library reads whatever was the separator.
double convert_carefully(Mantissa mantissa, long long power) noexcept
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
        platform::wide_product(integer << zeros, s_powers_of_ten[static_cast<std::size_t>(power - s_lowest_power)])
            .high;
    const int shift = (product >> 63) != 0 ? 11 : 10;
    const int exponent = binary_exponent_of_ten(static_cast<int>(power)) + shift + 53 - zeros;
    const std::uint64_t half = std::uint64_t{1} << (shift - 1), rest = product & (2 * half - 1);
    if (rest - (half - 1) <= 1 || exponent < -1022 || exponent > 1023)
        return false;
    const std::uint64_t significand = (product >> shift) + (rest > half);
    value = std::bit_cast<double>((static_cast<std::uint64_t>(exponent + 1022) << 52) + significand);
    return true;
}

// One exact quotient, where nobody minds that it may be inexact.
bool divide_exactly(std::uint64_t integer, long long power, double& value) noexcept
{
    static constexpr double s_exact_powers[] = {1e0,  1e1,  1e2,  1e3,  1e4,  1e5,  1e6,  1e7,  1e8,  1e9,  1e10, 1e11,
                                                1e12, 1e13, 1e14, 1e15, 1e16, 1e17, 1e18, 1e19, 1e20, 1e21, 1e22};
    const auto place = static_cast<unsigned long long>(-power);
    if (place >= std::size(s_exact_powers) || integer > s_exact_integer_limit || !platform::rounds_quietly())
        return false;
    value = static_cast<double>(static_cast<std::int64_t>(integer)) / s_exact_powers[place];
    return true;
}

double convert_large(Mantissa mantissa, long long power) noexcept
{
    if (mantissa.digits <= s_exact_digits) {
        if (double value; scale_quickly(mantissa.integer, power, value))
            return value;
        if (mantissa.integer == 0 || (power == 0 && mantissa.integer <= s_exact_integer_limit))
            return static_cast<double>(mantissa.integer);
    }
    return convert_carefully(mantissa, power);
}

template <class Text>
const char* skip_blanks(const char* p, Text text) noexcept
{
    // Few texts have any, and no other character of a number comes before the blank.
    while (static_cast<unsigned char>(text.at(p)) <= ' ' && is_white_space(text.at(p)))
        ++p;
    return p;
}

double with_sign(double magnitude, bool negative) noexcept
{
    return std::bit_cast<double>(bits_of(magnitude) | std::uint64_t{negative} << 63);
}

// With an exponent, or with more digits than a double holds, or none. Out of line, and with arguments that fit into
// registers, so that plain numbers do not pay for it.
template <class Text>
[[gnu::noinline]] ScannedNumber scan_elaborate(const char* start, const char* end, std::uint64_t integer,
                                               long long digits, long long fraction_digits, Text text) noexcept
{
    const char sign = text.at(start);
    if (digits == 0)
        return sign == '.' ? ScannedNumber{s_missing, start + 1} : ScannedNumber{0.0, start};
    const Mantissa mantissa = {start + (sign == '-' || sign == '+'), end, integer, digits, fraction_digits};
    const long long power = scan_exponent(end, text) - fraction_digits;
    double magnitude = 0.0;
    if (digits > s_exact_digits || !divide_exactly(integer, power, magnitude))
        magnitude = convert_large(mantissa, power);
    return {with_sign(magnitude, sign == '-'), end};
}

template <class Text>
[[gnu::always_inline]] inline ScannedNumber scan(const char* start, Text text, char decimal) noexcept
{
    const char sign = text.at(start);
    const auto mantissa = scan_mantissa(start + (sign == '-' || sign == '+'), text, decimal);
    const auto digits = static_cast<unsigned long long>(mantissa.digits);
    double magnitude = 0.0;
    if (digits - 1 >= s_exact_digits || is_exponent_mark(text.at(mantissa.end)) ||
        !divide_exactly(mantissa.integer, -mantissa.fraction_digits, magnitude)) [[unlikely]]
        return scan_elaborate(start, mantissa.end, mantissa.integer, mantissa.digits, mantissa.fraction_digits, text);
    return {with_sign(magnitude, sign == '-'), mantissa.end};
}

template <class Text>
bool scan_whole(const char* start, Text text, char decimal, double& value) noexcept
{
    start = skip_blanks(start, text);
    if (text.ended(start)) {
        value = s_missing;
        return true;
    }
    const auto number = scan(start, text, decimal);
    if (number.end == start || (!text.ended(number.end) && !text.ended(skip_blanks(number.end, text))))
        return false;
    value = number.value;
    return true;
}

} // namespace

ScannedNumber scan_number(const char* text, const char* end, char decimal) noexcept
{
    return scan(text, Bounded(end), decimal);
}

ScannedNumber scan_number(const char* text, char decimal) noexcept
{
    return scan(text, Terminated(), decimal);
}

bool scan_field(const char* text, const char* end, char decimal, double& value) noexcept
{
    return scan_whole(text, Bounded(end), decimal, value);
}

bool scan_field(const char* text, char decimal, double& value) noexcept
{
    return scan_whole(text, Terminated(), decimal, value);
}

} // namespace qmml
