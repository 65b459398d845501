// Relations of two finite numbers as 1.0 or 0.0. Compilers like to make a jump of them, and on data a jump is a guess.
#pragma once

#if defined(__x86_64__) || defined(_M_X64)
#include <emmintrin.h>
#endif

namespace qmml::platform {

#if defined(__x86_64__) || defined(_M_X64)

namespace detail {
inline double truth(__m128d mask) noexcept
{
    return _mm_cvtsd_f64(_mm_and_pd(mask, _mm_set_sd(1.0)));
}
} // namespace detail

inline double equal(double a, double b) noexcept
{
    return detail::truth(_mm_cmpeq_sd(_mm_set_sd(a), _mm_set_sd(b)));
}
inline double not_equal(double a, double b) noexcept
{
    return detail::truth(_mm_cmpneq_sd(_mm_set_sd(a), _mm_set_sd(b)));
}
inline double less(double a, double b) noexcept
{
    return detail::truth(_mm_cmplt_sd(_mm_set_sd(a), _mm_set_sd(b)));
}
inline double less_equal(double a, double b) noexcept
{
    return detail::truth(_mm_cmple_sd(_mm_set_sd(a), _mm_set_sd(b)));
}

// Of truth values.
inline double both(double a, double b) noexcept
{
    return _mm_cvtsd_f64(_mm_and_pd(_mm_set_sd(a), _mm_set_sd(b)));
}
inline double either(double a, double b) noexcept
{
    return _mm_cvtsd_f64(_mm_or_pd(_mm_set_sd(a), _mm_set_sd(b)));
}

#else

inline double equal(double a, double b) noexcept
{
    return a == b ? 1.0 : 0.0;
}
inline double not_equal(double a, double b) noexcept
{
    return a != b ? 1.0 : 0.0;
}
inline double less(double a, double b) noexcept
{
    return a < b ? 1.0 : 0.0;
}
inline double less_equal(double a, double b) noexcept
{
    return a <= b ? 1.0 : 0.0;
}

inline double both(double a, double b) noexcept
{
    return a * b;
}
inline double either(double a, double b) noexcept
{
    return a > b ? a : b;
}

#endif

} // namespace qmml::platform
