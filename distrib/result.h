// The one way in which this family reports.
#pragma once

#include "platform/float_guard.h"
#include "platform/last_error.h"

namespace qmml {

inline constexpr double distr_error_value = -3.0e30;
inline constexpr unsigned distr_error_code = 0x80000001u;

inline double distr_ok(double value) noexcept
{
    platform::set_last_error(0);
    return value;
}

inline double distr_fail() noexcept
{
    platform::set_last_error(distr_error_code);
    return distr_error_value;
}

// For the densities that promise a finite result: anything else fails, and the unit's flags do not outlive it.
inline double distr_finite(double value) noexcept
{
    if (__builtin_isfinite(value)) [[likely]]
        return distr_ok(value);
    const platform::FloatGuard reset;
    return distr_fail();
}

} // namespace qmml
