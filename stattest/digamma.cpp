#include "stattest/digamma.h"

#include "core/elementary.h"

#include <iterator>

namespace qmml::stattest {

// The asymptotic series (Abramowitz and Stegun 6.3.18) from 10 on; below, psi(k) = psi(k + 1) - 1 / k until there.
double log_minus_digamma(double k) noexcept
{
    static constexpr double s_bernoulli[] = {1.0 / 12,  -1.0 / 120,     1.0 / 252, -1.0 / 240,
                                             1.0 / 132, -691.0 / 32760, 1.0 / 12,  -3617.0 / 8160};
    double shifted = k, reciprocals = 0;
    while (shifted < 10) {
        reciprocals += 1 / shifted;
        shifted += 1;
    }
    const double r = 1 / shifted, square = r * r;
    double series = 0;
    for (std::size_t i = std::size(s_bernoulli); i-- > 0;)
        series = series * square + s_bernoulli[i];
    const double there = 0.5 * r + series * square;
    return shifted == k ? there : there + reciprocals - (elementary::log(shifted) - elementary::log(k));
}

} // namespace qmml::stattest
