#include "numtext/format_number.h"

#include "core/missing.h"
#include "numtext/decimal_digits.h"
#include "numtext/digit_words.h"
#include "numtext/quick_digits.h"

#include <algorithm>
#include <array>
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

int fixed_length(int count, int exponent) noexcept
{
    const int leading = std::max(-exponent, 0), whole = std::max(exponent + 1, 1); // 0.00ddd, ddd00
    return std::max(whole, count + leading + (count > exponent + 1));
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

// "e-308", for every exponent of a double.
struct ExponentText {
    char text[5];
    signed char length;
};
constexpr int s_lowest_exponent = -324, s_highest_exponent = 308;

constexpr auto make_exponents()
{
    std::array<ExponentText, s_highest_exponent - s_lowest_exponent + 1> texts = {};
    for (int exponent = s_lowest_exponent; exponent <= s_highest_exponent; ++exponent) {
        auto& [text, length] = texts[static_cast<std::size_t>(exponent - s_lowest_exponent)];
        const int magnitude = std::max(exponent, -exponent);
        text[length++] = 'e';
        if (exponent < 0)
            text[length++] = '-';
        for (int power = magnitude >= 100 ? 100 : magnitude >= 10 ? 10 : 1; power != 0; power /= 10)
            text[length++] = static_cast<char>('0' + magnitude / power % 10);
    }
    return texts;
}
constexpr auto s_exponents = make_exponents();

const ExponentText& exponent_text(int exponent) noexcept
{
    return s_exponents[static_cast<std::size_t>(exponent - s_lowest_exponent)];
}

// Fixed where that fits, and also where an exponent would make it no shorter.
bool fixed_serves(int count, int exponent, bool negative, int width) noexcept
{
    const int fixed = fixed_length(count, exponent);
    return fixed + negative <= width || fixed <= count + (count > 1) + exponent_text(exponent).length;
}

char* append_scientific(char* text, const DecimalDigits& number, char decimal) noexcept
{
    *text++ = number.digits[0];
    if (number.count > 1) {
        *text++ = decimal;
        std::memcpy(text, number.digits + 1, 16);
        text += number.count - 1;
    }
    const auto& [exponent, length] = exponent_text(number.exponent);
    std::memcpy(text, exponent, sizeof exponent);
    return text + length;
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
    return fixed_serves(number.count, number.exponent, negative, width) ? append_fixed(text, number, decimal)
                                                                        : append_scientific(text, number, decimal);
}

// How the digits turn into at most sixteen characters.
struct Layout {
    int leading; // zeros in front
    int whole;   // digits before the separator
    int length;  // of the characters, without blanks
};

SixteenBytes lay_out(const SixteenBytes& digits, const Layout& layout, char decimal) noexcept
{
    const auto before = layout.leading == 0 ? digits : move_back(digits, layout.leading), behind = move_back(before, 1);
    const auto &to_separator = leading_mask(layout.whole), &past_separator = leading_mask(layout.whole + 1),
               &used = leading_mask(layout.length);
    const std::uint64_t separator = repeat(static_cast<char>(decimal ^ '0')), zeros = repeat('0'), blanks = repeat(' ');
    const auto word = [&](std::uint64_t SixteenBytes::*half) {
        const std::uint64_t first = to_separator.*half, second = past_separator.*half;
        const std::uint64_t characters =
            ((before.*half & first) | (separator & (first ^ second)) | (behind.*half & ~second)) ^ zeros;
        return (characters & used.*half) | (blanks & ~(used.*half));
    };
    return {word(&SixteenBytes::low), word(&SixteenBytes::high)};
}

// A number below 1 whose digits do not fit sixteen characters together with what stands in front of them.
int format_small(const PackedDigits& number, bool negative, int width, char decimal, char* text) noexcept
{
    const char front[] = {'0', decimal, '0', '0', '0'};
    const std::uint64_t zeros = repeat('0');
    char line[s_slack];
    *line = '-';
    char* const start = line + negative;
    std::memcpy(start, front, sizeof front);
    char* const digits = start + 1 - number.exponent;
    store_bytes(digits, number.digits.low ^ zeros);
    store_bytes(digits + 8, number.digits.high ^ zeros);
    const auto length = static_cast<int>(digits - line) + number.count, end = std::max(length, width);
    std::memcpy(text, line, 16); // and from the other end: nothing behind the text is touched
    std::memcpy(text + length - 16, line + length - 16, 16);
    std::memset(text + length, ' ', static_cast<std::size_t>(end - length));
    text[end] = '\0';
    return end;
}

// Where sixteen characters hold all but sign and exponent, in a field of at least 15: written in place, in few words
// and without branches, since lengths and signs are as good as random. 0 where that cannot be.
int format_in_words(double value, int width, int digits, char decimal, char* text) noexcept
{
    constexpr int most_front_zeros = 4;
    const auto number = quick_digits(value, digits);
    const bool negative = (bits_of(value) >> 63) != 0;
    if (number.count == 0)
        return 0;
    const int fixed = fixed_length(number.count, number.exponent);
    const bool is_fixed = fixed_serves(number.count, number.exponent, negative, width);
    if (is_fixed && fixed > 16)
        return number.exponent < 0 && number.exponent >= -most_front_zeros
                   ? format_small(number, negative, width, decimal, text)
                   : 0;
    const Layout layout = {is_fixed ? std::max(-number.exponent, 0) : 0,
                           is_fixed ? std::max(number.exponent + 1, 1) : 1,
                           is_fixed ? fixed : number.count + (number.count > 1)};
    const auto [low, high] = lay_out(number.digits, layout, decimal);
    const int sign_bits = 8 * negative;
    const auto minus = static_cast<std::uint64_t>(negative ? '-' : 0);
    const int mantissa = layout.length + negative;
    const auto& exponent = exponent_text(number.exponent);
    const int length = is_fixed ? mantissa : mantissa + exponent.length;
    const int end = std::max(length, width);

    store_bytes(text, low << sign_bits | minus);
    store_bytes(text + 8, high << sign_bits | low >> 1 >> (63 - sign_bits));
    char unused[8];
    char* const last = mantissa > 16 ? text + 16 : unused;
    *last = static_cast<char>(high >> 56);
    // Two to five characters as three pairs that overlap.
    char* const behind = is_fixed ? unused : text + mantissa;
    for (const int place : {0, (exponent.length - 1) / 2, exponent.length - 2})
        std::memcpy(behind + place, exponent.text + place, 2);
    if (width > 16 && width > length)
        std::memset(text + length, ' ', static_cast<std::size_t>(end - length));
    text[end] = '\0';
    return end;
}

} // namespace

int format_general(double value, int width, int digits, char decimal, char* text) noexcept
{
    if (width >= 15)
        if (const int length = format_in_words(value, width, digits, decimal, text); length != 0)
            return length;
    char line[s_widest_field + s_slack];
    const char* end = append_number(line, value, width, digits, decimal);
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
