// P. Royston, Remark AS R94: A remark on Algorithm AS 181, the W-test for normality, Applied Statistics 44 (1995),
// 547-551.
#include "stattest/shapiro_wilk.h"

#include <qmml/distrib.h>

#include "core/block.h"
#include "core/elementary.h"
#include "core/sort.h"
#include "stattest/error.h"
#include "stattest/kernels.h"

#include <algorithm>
#include <cmath>
#include <numbers>

namespace qmml::stattest {
namespace {

constexpr int s_most_values = 5000;
constexpr double s_least_range = 1e-29; // the publication has 1e-19

template <std::size_t N>
double polynomial(const double (&coefficients)[N], double x) noexcept
{
    double value = 0;
    for (std::size_t i = N; i-- > 0;)
        value = value * x + coefficients[i];
    return value;
}

// The weights of the largest values; those of the smallest are their negatives. a holds the normal scores.
void compute_coefficients(double* a, int n) noexcept
{
    static constexpr double s_first[] = {0, 0.221157, -0.147981, -2.071190, 4.434685, -2.706056};
    static constexpr double s_second[] = {0, 0.042981, -0.293762, -1.752461, 5.682633, -3.582633};
    if (n == 3) {
        a[0] = std::numbers::sqrt2 / 2;
        return;
    }
    const int half = n / 2;
    double squares = 0;
    for (int i = 0; i < half; ++i)
        squares += a[i] * a[i];
    squares *= 2;
    const double u = 1 / std::sqrt(static_cast<double>(n)), root = std::sqrt(squares);
    const double first = polynomial(s_first, u) - a[0] / root;
    const int exact = n > 5 ? 2 : 1;
    double rest = squares - 2 * a[0] * a[0], weight = 1 - 2 * first * first;
    if (exact == 2) {
        const double second = polynomial(s_second, u) - a[1] / root;
        rest -= 2 * a[1] * a[1];
        weight -= 2 * second * second;
        a[1] = second;
    }
    a[0] = first;
    const double factor = std::sqrt(rest / weight);
    for (int i = exact; i < half; ++i)
        a[i] = -a[i] / factor;
}

// 1 - W; W itself would lose digits near 1. x is in units of its range.
double one_minus_w(const double* x, int n, int used, const double* a) noexcept
{
    const auto weight = [=](int i) {
        const int mirrored = n - 1 - i;
        return i == mirrored ? 0 : i < mirrored ? -a[i] : a[mirrored];
    };
    double mean_weight = 0, mean = 0;
    for (int i = 0; i < used; ++i) {
        mean_weight += weight(i);
        mean += x[i];
    }
    mean_weight /= used;
    mean /= used;
    double weights = 0, squares = 0, products = 0;
    for (int i = 0; i < used; ++i) {
        const double w = weight(i) - mean_weight, d = x[i] - mean;
        weights += w * w;
        squares += d * d;
        products += w * d;
    }
    const double root = std::sqrt(weights * squares);
    return (root - products) * (root + products) / (weights * squares);
}

// The exact distribution for three values; what the arcsine exceeds its least value by.
double p_of_three(double w, double rest) noexcept
{
    const double angle = rest <= 0 ? std::numbers::pi / 2 : elementary::atan(std::sqrt(w / rest));
    const double p = 6 / std::numbers::pi * (angle - std::numbers::pi / 3);
    return p < 0 ? 0 : p;
}

struct Transformed {
    double mean, deviation;
};

// The upper quantiles of what is left of a censored sample, and a line through them.
Transformed censored(Transformed t, double log_n, double part) noexcept
{
    constexpr double z90 = 1.2816, z95 = 1.6449, z99 = 2.3263, z_mean = 1.7509, z_squares = 0.56268;
    const double l = -elementary::log(part), b = 1 + log_n * 0.8378;
    const auto quantile = [=](double z, double c0, double c1, double base) {
        return z + b * elementary::pow(c0 + c1 * base, l);
    };
    const double f90 = quantile(z90, 0.164, 0.533, elementary::pow(0.556, log_n));
    const double f95 = quantile(z95, 0.1736, 0.315, elementary::pow(0.622, log_n));
    const double f99 = quantile(z99, 0.256, -0.00635, log_n);
    const double f_mean = (f90 + f95 + f99) / 3;
    const double slope = (z90 * (f90 - f_mean) + z95 * (f95 - f_mean) + z99 * (f99 - f_mean)) / z_squares;
    const double z = f_mean - slope * z_mean;
    return {t.mean + z * t.deviation, t.deviation * slope};
}

double significance(double rest, int n, int used) noexcept
{
    static constexpr double s_bound[] = {-2.273, 0.459};
    static constexpr double s_mean_small[] = {0.5440, -0.39978, 0.025054, -6.714e-4};
    static constexpr double s_deviation_small[] = {1.3822, -0.77857, 0.062767, -0.0020322};
    static constexpr double s_mean[] = {-1.5861, -0.31082, -0.083751, 0.0038915};
    static constexpr double s_deviation[] = {-0.4803, -0.082676, 0.0030302};
    double y = elementary::log(rest);
    const double log_n = elementary::log(n);
    Transformed t;
    if (n <= 11) {
        const double bound = polynomial(s_bound, n);
        if (y >= bound)
            return 1e-19;
        y = -elementary::log(bound - y);
        t = {polynomial(s_mean_small, n), elementary::exp(polynomial(s_deviation_small, n))};
    } else {
        t = {polynomial(s_mean, log_n), elementary::exp(polynomial(s_deviation, log_n))};
    }
    if (used < n)
        t = censored(t, log_n, static_cast<double>(n - used) / n);
    // As a lower tail: the complement would be 0 far out.
    return i_normal(-((y - t.mean) / t.deviation), 0, 1);
}

} // namespace

int shapiro_wilk_test(const double* data, int n, int used, bool with_coefficients, ShapiroWilk& result) noexcept
{
    using namespace shapiro_wilk;
    if (n > s_most_values) {
        result.p = -1;
        return s_too_many;
    }
    if (n < 3)
        return s_too_few;
    Block<double> coefficients(std::int64_t{n / 2 + 7} / 8 * 8), x(n);
    if (!coefficients || !x)
        return s_no_memory;
    if (used < 3)
        return s_too_few_used;
    const int missing = n - used;
    if (missing < 0 || (missing > 0 && n < 20) || static_cast<double>(missing) / n > 0.8)
        return s_censored_too_much;
    if (with_coefficients) {
        s_test_kernels->normal_scores(coefficients.data(), n);
        compute_coefficients(coefficients.data(), n);
    }
    std::copy_n(data, n, x.data());
    sort_ascending(x.data(), n);
    const double range = x[static_cast<std::size_t>(used - 1)] - x[0];
    if (range < s_least_range)
        return s_no_range;
    for (double& value : x)
        value /= range;
    const double rest = one_minus_w(x.data(), n, used, coefficients.data());
    result.w = 1 - rest;
    result.p = n == 3 ? p_of_three(result.w, rest) : significance(rest, n, used);
    return s_success;
}

} // namespace qmml::stattest
