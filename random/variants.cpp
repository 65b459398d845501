#include "core/character.h"
#include "core/missing.h"
#include "platform/clock.h"

#include <qmml/random.h>

#include <algorithm>
#include <charconv>
#include <cmath>
#include <cstdint>
#include <limits>
#include <optional>
#include <string_view>
#include <system_error>

namespace qmml {
namespace {

// Negative until there is one.
constinit double s_last_number = -1.0;

std::size_t count_digits(std::string_view text) noexcept
{
    std::size_t n = 0;
    while (n < text.size() && text[n] >= '0' && text[n] <= '9')
        ++n;
    return n;
}

// Digits with at most one point, then perhaps an exponent. No words, no hexadecimal.
bool is_unsigned_number(std::string_view text) noexcept
{
    std::size_t digits = count_digits(text);
    text.remove_prefix(digits);
    if (text.starts_with('.')) {
        text.remove_prefix(1);
        const std::size_t decimals = count_digits(text);
        text.remove_prefix(decimals);
        digits += decimals;
    }
    if (digits == 0)
        return false;
    if (text.starts_with('e') || text.starts_with('E')) {
        text.remove_prefix(1);
        if (text.starts_with('+') || text.starts_with('-'))
            text.remove_prefix(1);
        const std::size_t exponent = count_digits(text);
        text.remove_prefix(exponent);
        if (exponent == 0)
            return false;
    }
    return text.empty();
}

// The power of ten of the first digit that is not 0, for a number that has one. Saturates far outside of double's
// range.
std::int64_t decimal_exponent(std::string_view number) noexcept
{
    constexpr std::int64_t limit = std::numeric_limits<std::int64_t>::max() / 4;
    const std::size_t e = number.find_first_of("eE");
    const std::string_view digits = number.substr(0, e);
    const auto point = static_cast<std::int64_t>(std::min(digits.find('.'), digits.size()));
    const auto first = static_cast<std::int64_t>(digits.find_first_of("123456789"));
    std::int64_t exponent = 0;
    if (e != std::string_view::npos) {
        std::string_view text = number.substr(e + 1);
        const bool negative = text.starts_with('-');
        if (negative || text.starts_with('+'))
            text.remove_prefix(1);
        if (std::from_chars(text.data(), text.data() + text.size(), exponent).ec != std::errc() || exponent > limit)
            exponent = limit;
        exponent = negative ? -exponent : exponent;
    }
    return exponent + point - first - (first < point ? 1 : 0);
}

std::optional<double> parse(std::string_view text) noexcept
{
    while (!text.empty() && is_white_space(text.front()))
        text.remove_prefix(1);
    while (!text.empty() && is_white_space(text.back()))
        text.remove_suffix(1);
    const bool negative = text.starts_with('-');
    if (negative || text.starts_with('+'))
        text.remove_prefix(1);
    if (!is_unsigned_number(text))
        return std::nullopt;
    double value = 0;
    if (std::from_chars(text.data(), text.data() + text.size(), value).ec == std::errc::result_out_of_range)
        value = decimal_exponent(text) > 0 ? std::numeric_limits<double>::infinity() : 0.0;
    return negative ? -value : value;
}

// The variant itself, or the one that it refers to; null when there is none.
const QmmlVariant* resolve(const QmmlVariant& variant) noexcept
{
    if (!(variant.kind & QMML_BYREF))
        return &variant;
    const QmmlVariant* meant = variant.value.ref;
    return meant && !(meant->kind & QMML_BYREF) ? meant : nullptr;
}

// Nothing where the argument is missing, or converts to no number.
std::optional<double> as_double(const QmmlVariant& variant) noexcept
{
    const QmmlVariant* meant = resolve(variant);
    switch (meant ? meant->kind : QMML_ERROR) {
    case QMML_INT32: return meant->value.i;
    case QMML_DOUBLE: return meant->value.d;
    case QMML_TEXT: return meant->value.text ? parse(meant->value.text) : std::nullopt;
    default: return std::nullopt;
    }
}

// To the nearest integer, halves to even whatever the rounding mode.
std::optional<std::int32_t> as_integer(const QmmlVariant& variant) noexcept
{
    const auto number = as_double(variant);
    if (!number || !is_finite(*number) || std::fabs(*number) > 2147483649.0)
        return std::nullopt;
    const double below = std::floor(*number), fraction = *number - below;
    auto rounded = static_cast<std::int64_t>(below);
    if (fraction > 0.5 || (fraction == 0.5 && rounded % 2 != 0))
        ++rounded;
    if (rounded < std::numeric_limits<std::int32_t>::min() || rounded > std::numeric_limits<std::int32_t>::max())
        return std::nullopt;
    return static_cast<std::int32_t>(rounded);
}

} // namespace
} // namespace qmml

double TumoRnd(QmmlVariant number)
{
    const std::int32_t k = qmml::as_integer(number).value_or(1);
    if (k == 0 && qmml::s_last_number >= 0)
        return qmml::s_last_number;
    if (k < 0)
        inirnd_(-static_cast<double>(k));
    return qmml::s_last_number = rnd_(0);
}

int TumoRandomize(QmmlVariant seed)
{
    const auto number = qmml::as_double(seed);
    inirnd_(number ? *number : static_cast<double>(qmml::platform::calendar_time()));
    return 0;
}
