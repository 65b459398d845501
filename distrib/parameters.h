// Which arguments keep the distributions behind log-gammas and powers clear of serious faults: with parameters beyond
// these bounds the rounding errors of the exponent alone can overflow.
#pragma once

#include "distrib/guard.h"

namespace qmml {

template <class... V>
inline bool calm_parameters(V... v) noexcept
{
    return (... && between(v, 0x1p-30, 0x1p30));
}

inline bool calm_positive(double x) noexcept
{
    return between(x, 0x1p-100, 0x1p100);
}

} // namespace qmml
