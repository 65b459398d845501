#include "distrib/binomial_coefficient.h"

#include <qmml/distrib.h>

#include "core/elementary.h"
#include "distrib/guard.h"

#include <array>
#include <cstdint>

namespace qmml {

static constexpr int s_summed = 70;

// ln 1 + ... + ln n, from left to right.
static double sum_of_logarithms(std::int64_t n) noexcept
{
    static const auto s_sums = [] {
        std::array<double, s_summed + 1> sums{};
        for (std::size_t i = 1; i < sums.size(); ++i)
            sums[i] = sums[i - 1] + elementary::log(static_cast<double>(i));
        return sums;
    }();
    if (n < 1)
        return 0;
    if (n <= s_summed)
        return s_sums[static_cast<std::size_t>(n)];
    // Reached for negative k only; a coefficient below exp(-750) is 0 however far the sum is taken.
    double sum = s_sums[s_summed];
    for (std::int64_t i = s_summed + 1; i <= n && sum < 2000; ++i)
        sum += elementary::log(static_cast<double>(i));
    return sum;
}

// ln n! by Stirling's formula with one correction term.
static double stirling(double n) noexcept
{
    constexpr double two_pi = 6.283185307179586;
    if (n == 0 || n == 1)
        return 0;
    return 0.5 * elementary::log(two_pi * n) + n * elementary::log(n) - n + 1 / (12 * n);
}

double binomial_coefficient(int n, int k) noexcept
{
    const std::int64_t rest = std::int64_t(n) - k;
    if (n <= s_summed && k <= s_summed)
        return elementary::exp(sum_of_logarithms(n) - sum_of_logarithms(k) - sum_of_logarithms(rest));
    // The quotient is taken in logarithms: the factorials themselves overflow from 171 on.
    return elementary::exp(stirling(n) - stirling(static_cast<double>(rest)) - stirling(k));
}

} // namespace qmml

double fctral(int n, int k)
{
    return qmml::shielded([=] { return qmml::binomial_coefficient(n, k); });
}
