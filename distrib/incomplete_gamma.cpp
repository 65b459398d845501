#include "distrib/incomplete_gamma.h"

#include <qmml/distrib.h>

#include "core/elementary.h"
#include "distrib/guard.h"
#include "distrib/log_gamma.h"
#include "platform/thread_local.h"

#include <cmath>

namespace qmml {

static constexpr int s_steps = 300;
static constexpr double s_tolerance = 1e-6;

// x^a e^-x / Gamma(a)
static inline double gamma_weight(double a, double x, double ln_gamma_a) noexcept
{
    return elementary::exp(a * elementary::log(x) - x - ln_gamma_a);
}

bool gamma_series(double a, double x, double ln_gamma_a, double* lower) noexcept
{
    if (x < 0)
        return false;
    const double weight = gamma_weight(a, x, ln_gamma_a); // ahead of the loop, which does not wait for it
    constexpr int block = 4;                              // quotients side by side, ahead of the chain of products
    static_assert(s_steps % block == 0);
    double term = 1 / a, sum = term;
    for (int n = 0; n < s_steps; n += block) {
        double quotient[block];
        for (int i = 0; i < block; ++i)
            quotient[i] = x / (a + (n + 1 + i));
        for (int i = 0; i < block; ++i) {
            term *= quotient[i];
            sum += term;
            if (std::fabs(term) < std::fabs(sum) * s_tolerance) {
                if (x <= 0)
                    return false;
                *lower = sum * weight;
                return true;
            }
        }
    }
    return false;
}

// The three-term recurrence with its denominator scaled to 1 in every step: good for every argument.
static bool scaled_fraction(double a, double x, double* fraction) noexcept
{
    double previous = 0, a0 = 1, a1 = x, b0 = 0, b1 = 1, scale = 1;
    for (int n = 1; n <= s_steps; ++n) {
        const double excess = n - a;
        a0 = (a1 + a0 * excess) * scale;
        b0 = (b1 + b0 * excess) * scale;
        const double step = n * scale;
        a1 = x * a0 + step * a1;
        b1 = x * b0 + step * b1;
        if (a1 != 0) {
            scale = 1 / a1;
            const double value = b1 * scale;
            if (std::fabs((value - previous) / value) < s_tolerance) {
                *fraction = value;
                return true;
            }
            previous = value;
        }
    }
    return false;
}

// The same recurrence for 0 < a <= x - 1 <= 1e6, where every quantity is positive and a step multiplies it by less than
// 2^45: no division stands in the chain from step to step.
static bool unscaled_fraction(double a, double x, double* fraction) noexcept
{
    constexpr double large = 0x1p900, shrink = 0x1p-900;
    double previous = 0, a0 = 1, a1 = x, b0 = 0, b1 = 1;
    for (int n = 1; n <= s_steps; ++n) {
        const double excess = n - a;
        a0 = a1 + a0 * excess;
        b0 = b1 + b0 * excess;
        a1 = x * a0 + n * a1;
        b1 = x * b0 + n * b1;
        const double value = b1 / a1;
        if (std::fabs(value - previous) < s_tolerance * value) {
            *fraction = value;
            return true;
        }
        previous = value;
        if (a1 > large) [[unlikely]] {
            a0 *= shrink;
            a1 *= shrink;
            b0 *= shrink;
            b1 *= shrink;
        }
    }
    return false;
}

bool gamma_fraction(double a, double x, double ln_gamma_a, double* upper) noexcept
{
    const double weight = gamma_weight(a, x, ln_gamma_a);
    double fraction;
    const bool tame = a > 0 && x >= a + 1 && x <= 1e6;
    if (!(tame ? unscaled_fraction(a, x, &fraction) : scaled_fraction(a, x, &fraction)))
        return false;
    *upper = weight * fraction;
    return true;
}

double gamma_upper(double a, double x) noexcept
{
    static constinit QMML_THREAD_LOCAL LnGammaMemo s_ln_gamma;
    if (x < 0 || a <= 0)
        return distr_error_value;
    double ratio;
    if (x < a + 1)
        return gamma_series(a, x, s_ln_gamma(a), &ratio) ? 1 - ratio : distr_error_value;
    return gamma_fraction(a, x, s_ln_gamma(a), &ratio) ? ratio : distr_error_value;
}

static double gammq_kernel(double a, double x) noexcept
{
    const double value = gamma_upper(a, x);
    return value == distr_error_value ? distr_fail() : distr_ok(value);
}

// The common frame of both engines as exports: 1 is failure, the last error is that of the log-gamma.
template <auto Engine>
static short engine_entry(double* ratio, double a, double x, double* ln_gamma_a) noexcept
{
    double value = 0;
    const double gln = gammln(a);
    if (ln_gamma_a)
        *ln_gamma_a = gln;
    bool converged = false;
    shielded([&] {
        converged = Engine(a, x, gln, &value);
        return value;
    });
    if (converged && ratio)
        *ratio = value;
    return converged ? 0 : 1;
}

} // namespace qmml

short gser(double* gamser, double a, double x, double* gln)
{
    return qmml::engine_entry<qmml::gamma_series>(gamser, a, x, gln);
}

short gcf(double* gammcf, double a, double x, double* gln)
{
    return qmml::engine_entry<qmml::gamma_fraction>(gammcf, a, x, gln);
}

double gammq(double a, double x)
{
    return qmml::shielded([=] { return qmml::gammq_kernel(a, x); });
}
