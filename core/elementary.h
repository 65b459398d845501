// Elementary functions: the one set that scalar code, columns and distributions share, so that a result has the same
// bits wherever it is computed. Ordinary arguments are handled in line; a fault is raised exactly where mathematics has
// one.
#pragma once

#include "core/elementary_kernels.h"

namespace qmml::elementary {

// The arguments that the inline paths leave out: NaN, infinities, poles, overflow, huge angles.
double exp_special(double x) noexcept;
double log_special(double x) noexcept;
double sin_special(double x) noexcept;
double cos_special(double x) noexcept;
double tan(double x) noexcept;
double atan(double x) noexcept;
double pow_general(double x, double y) noexcept;

inline std::uint64_t magnitude_bits(double x) noexcept
{
    return std::bit_cast<std::uint64_t>(x) & 0x7fffffffffffffffu;
}

// For arguments known to lie inside s_exponential_range.
inline double exp_ordinary(double x) noexcept
{
    return exp_normal_range<ScalarLane>(x);
}

inline double exp(double x) noexcept
{
    if (magnitude_bits(x) < std::bit_cast<std::uint64_t>(s_exponential_range)) [[likely]]
        return exp_ordinary(x);
    return exp_special(x);
}

// For arguments known to be positive, normal and finite.
inline double log_ordinary(double x) noexcept
{
    return log_normal_range<ScalarLane>(x, s_exponent_origin);
}

inline double log(double x) noexcept
{
    const auto bits = std::bit_cast<std::uint64_t>(x);
    if (bits - 0x0010000000000000u < 0x7fe0000000000000u) [[likely]] // positive, normal, finite
        return log_ordinary(x);
    return log_special(x);
}

inline double sin(double x) noexcept
{
    if (magnitude_bits(x) <= std::bit_cast<std::uint64_t>(s_reduction_limit)) [[likely]]
        return sin_moderate<ScalarLane>(x);
    return sin_special(x);
}

inline double cos(double x) noexcept
{
    if (magnitude_bits(x) <= std::bit_cast<std::uint64_t>(s_reduction_limit)) [[likely]]
        return cos_moderate<ScalarLane>(x);
    return cos_special(x);
}

// A square is one product, correctly rounded; every other power is the C library's.
inline double pow(double x, double y) noexcept
{
    if (std::bit_cast<std::uint64_t>(y) == std::bit_cast<std::uint64_t>(2.0))
        return x * x;
    return pow_general(x, y);
}

} // namespace qmml::elementary
