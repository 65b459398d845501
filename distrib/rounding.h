// How the discrete distributions round their arguments.
#pragma once

#include <cmath>

namespace qmml {

// To the nearest integer, halves away from zero; -0.4 keeps its sign. A NaN stays one.
inline double round_half_away(double x) noexcept
{
    if (x < 0)
        return std::ceil(x - 0.5);
    if (x > 0)
        return std::floor(x + 0.5);
    return x == 0 ? 0 : x;
}

} // namespace qmml
