// The tolerant comparisons. They work on the bits: quick, and no operand raises a fault.
#pragma once

#include "core/missing.h"

#include <cstdint>

namespace qmml {
namespace compare_detail {

inline constexpr std::uint64_t s_kept = ~std::uint64_t{0xF};
inline constexpr std::uint32_t s_kept_float = ~std::uint32_t{0x3};

// An integer that orders as the masked value does, both zeros being 0. Masking may turn a NaN into an infinity; what
// remains a NaN lies beyond the infinities.
constexpr std::int64_t order(double value) noexcept
{
    const auto bits = static_cast<std::int64_t>(bits_of(value) & s_kept);
    const std::int64_t sign = bits < 0 ? -1 : 0;
    return ((bits & INT64_MAX) ^ sign) - sign;
}
constexpr std::int32_t order(float value) noexcept
{
    const auto bits = static_cast<std::int32_t>(bits_of(value) & s_kept_float);
    const std::int32_t sign = bits < 0 ? -1 : 0;
    return ((bits & INT32_MAX) ^ sign) - sign;
}

constexpr bool is_number(std::int64_t order) noexcept
{
    constexpr std::int64_t infinity = 0x7FF0000000000000;
    return order >= -infinity && order <= infinity;
}
constexpr bool is_number(std::int32_t order) noexcept
{
    constexpr std::int32_t infinity = 0x7F800000;
    return order >= -infinity && order <= infinity;
}

} // namespace compare_detail

// An unordered pair is greater (or equal) in no direction, and less in both.
template <class Real>
constexpr bool is_greater(Real a, Real b) noexcept
{
    const auto x = compare_detail::order(a), y = compare_detail::order(b);
    return x > y && compare_detail::is_number(x) && compare_detail::is_number(y);
}

template <class Real>
constexpr bool is_greater_equal(Real a, Real b) noexcept
{
    const auto x = compare_detail::order(a), y = compare_detail::order(b);
    return x >= y && compare_detail::is_number(x) && compare_detail::is_number(y);
}

template <class Real>
constexpr bool is_less(Real a, Real b) noexcept
{
    return !is_greater_equal(a, b);
}

template <class Real>
constexpr bool is_less_equal(Real a, Real b) noexcept
{
    return !is_greater(a, b);
}

// Two NaNs are equal; a NaN and a number are not.
constexpr bool is_equal(double a, double b) noexcept
{
    if (is_nan(a) || is_nan(b))
        return is_nan(a) && is_nan(b);
    return compare_detail::order(a) == compare_detail::order(b);
}

// A NaN equals everything.
constexpr bool is_equal(float a, float b) noexcept
{
    const auto x = compare_detail::order(a), y = compare_detail::order(b);
    return x == y || !compare_detail::is_number(x) || !compare_detail::is_number(y);
}

} // namespace qmml
