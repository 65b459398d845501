#include "distrib/inverse_beta.h"

#include "core/elementary.h"
#include "distrib/incomplete_beta.h"
#include "distrib/log_gamma.h"
#include "platform/thread_local.h"

#include <algorithm>
#include <cmath>
#include <iterator>

// G. W. Cran, K. J. Martin and G. E. Thomas, Algorithm AS 109, Inverse of the incomplete beta function ratio, Applied
// Statistics 26 (1977), 111-114, with K. J. Berry, P. W. Mielke and G. W. Cran, Remark AS R83, 39 (1990), 309-310, and
// its correction, 40 (1991), 236.
namespace qmml {

static constexpr int s_exponent_floor = -305;
static constexpr double s_step_floor = 1e-305;
// Bounds on the work, far above what ordinary arguments need: an F with a million degrees takes 24 million terms, a
// shape of 0.01 some 800 passes. A step of any size is damped away in 1400 rounds.
static constexpr int s_passes = 3000;
static constexpr int s_dampings = 2000; // of one pass
static constexpr int s_terms = 30'000'000;

// The published start, for a tail area of at most one half.
static double starting_point(double area, double p, double q, double ln_beta) noexcept
{
    const double r = std::sqrt(-elementary::log(area * area));
    const double y = r - (2.30753 + 0.27061 * r) / (1 + (0.99229 + 0.04481 * r) * r);
    if (p > 1 && q > 1) {
        const double lambda = (y * y - 3) / 6, s = 1 / (2 * p - 1), t = 1 / (2 * q - 1), h = 2 / (s + t);
        const double w = y * std::sqrt(h + lambda) / h - (t - s) * (lambda + 5.0 / 6 - 2 / (3 * h));
        return p / (p + q * elementary::exp(2 * w));
    }
    const double degrees = 2 * q, ninth = 1 / (9 * q), root = 1 - ninth + y * std::sqrt(ninth);
    const double chi_square = degrees * (root * root * root);
    if (chi_square <= 0)
        return 1 - elementary::exp((elementary::log((1 - area) * q) + ln_beta) / q);
    const double t = (4 * p + degrees - 2) / chi_square;
    if (t <= 1)
        return elementary::exp((elementary::log(area * p) + ln_beta) / p);
    return 1 - 2 / (t + 1);
}

// Exact, and so are their reciprocals as far as rounding goes.
static constexpr double s_powers_of_ten[] = {1e0,  1e1,  1e2,  1e3,  1e4,  1e5,  1e6,  1e7,  1e8,  1e9,  1e10, 1e11,
                                             1e12, 1e13, 1e14, 1e15, 1e16, 1e17, 1e18, 1e19, 1e20, 1e21, 1e22};

// The bound of the squared step, tighter where the quantile is small.
static double step_accuracy(double area, double p) noexcept
{
    const double exponent = std::max(-5 / (p * p) - 1 / elementary::pow(area, 0.2) - 13, double(s_exponent_floor));
    const int digits = -static_cast<int>(exponent);
    if (digits >= int(std::size(s_powers_of_ten)))
        return elementary::pow(10, -digits);
    return 1 / s_powers_of_ten[digits];
}

Quantile inverse_beta(double alpha, double p, double q, double ln_beta, InverseBetaAccuracy accuracy) noexcept
{
    if (!(p > 0 && q > 0 && alpha >= 0 && alpha <= 1))
        return {alpha, true};
    if (alpha == 0 || alpha == 1)
        return {alpha, false};
    const bool swapped = alpha > 0.5;
    const double area = swapped ? 1 - alpha : alpha, pp = swapped ? q : p, qq = swapped ? p : q;
    const auto finish = [swapped](double x) { return Quantile{swapped ? 1 - x : x, false}; };
    const Quantile no_convergence{alpha, true};

    double x = std::clamp(starting_point(area, pp, qq, ln_beta), 0.0001, 0.9999);
    const double bound = accuracy.step > 0 ? accuracy.step : step_accuracy(area, pp);
    double previous_y = 0, square = 1, previous_square = 1;
    int budget = s_terms;
    for (int pass = 0; pass < s_passes; ++pass) {
        const BetaRatio ratio = beta_ratio(x, pp, qq, ln_beta, accuracy.ratio, &budget);
        if (ratio.fault)
            return no_convergence;
        const double y = (ratio.value - area) / ratio.density;
        if (!std::isfinite(y))
            return no_convergence;
        if (y * previous_y <= 0)
            previous_square = std::max(square, s_step_floor);
        double next;
        int dampings = 0;
        for (double damping = 1;; damping /= 3) {
            if (++dampings > s_dampings)
                return no_convergence;
            const double step = damping * y;
            square = step * step;
            if (square >= previous_square)
                continue;
            next = x - step;
            if (next < 0 || next > 1)
                continue;
            // The point of the last evaluation is the answer: its correction is not applied.
            if (previous_square <= bound || y * y <= bound)
                return finish(x);
            if (next != 0 && next != 1)
                break;
        }
        if (next == x)
            return finish(x);
        x = next;
        previous_y = y;
    }
    return no_convergence;
}

Quantile inverse_beta(double alpha, double p, double q) noexcept
{
    static constinit QMML_THREAD_LOCAL LnGammaMemo s_first, s_second, s_sum;
    return inverse_beta(alpha, p, q, s_first(p) + s_second(q) - s_sum(p + q), standard_accuracy);
}

Quantile inverse_f(double p, double df1, double df2) noexcept
{
    if (p < 0 || p >= 1 || df1 <= 0)
        return {p, true};
    if (p == 0)
        return {0, false};
    const Quantile y = inverse_beta(1 - p, df2 / 2, df1 / 2);
    if (y.fault)
        return y;
    return {y.value == 0 ? 0 : (df2 / y.value - df2) / df1, false};
}

} // namespace qmml
