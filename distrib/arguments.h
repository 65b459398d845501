// How the closed forms take their arguments. A call is calm when no step of it can raise a serious fault.
#pragma once

#include "distrib/guard.h"

namespace qmml {

inline double standardised(double x, double location, double scale) noexcept
{
    return (x - location) / scale;
}

// The standardised distance is then at most 2^201, and its square and products have room.
inline bool calm_point(double x, double location, double scale) noexcept
{
    return moderate(x, location) && moderate_scale(scale);
}

// The same for exp(-z), which overflows far below the location.
inline bool calm_exponent(double x, double location, double scale) noexcept
{
    return calm_point(x, location, scale) && standardised(x, location, scale) > -700;
}

// A distance at which exp needs no look at its argument, and its square has room.
inline bool near_point(double x, double location, double scale) noexcept
{
    return calm_point(x, location, scale) && within(standardised(x, location, scale), 256.0);
}

inline bool calm_quantile(double p, double location, double scale) noexcept
{
    return inner_probability(p) && moderate(location) && moderate_scale(scale);
}

inline double clamped(double p) noexcept // a NaN passes through
{
    return p < 0 ? 0 : p > 1 ? 1 : p;
}

// For the quantiles that take anything outside [0, 1] for 0.
inline double zero_outside(double p) noexcept
{
    return p < 0 || p > 1 ? 0 : p;
}

} // namespace qmml
