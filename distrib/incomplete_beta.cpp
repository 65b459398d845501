#include "distrib/incomplete_beta.h"

#include <qmml/distrib.h>

#include "distrib/guard.h"
#include "distrib/log_gamma.h"
#include "distrib/log_pair.h"
#include "platform/thread_local.h"

#include <cmath>

namespace qmml {

static constexpr int s_steps = 5000;
static constexpr double s_tolerance = 1e-6;

namespace {

// The fraction's coefficients: one step of it is an even and an odd one.
struct Coefficients {
    const double a, b, x, sum, above, below;

    Coefficients(double a_, double b_, double x_) noexcept
        : a(a_), b(b_), x(x_), sum(a_ + b_), above(a_ + 1), below(a_ - 1)
    {
    }
    double start() const noexcept { return 1 - sum * x / above; }
    double even(double m) const noexcept { return m * (b - m) * x / ((below + 2 * m) * (a + 2 * m)); }
    double odd(double m) const noexcept { return -(a + m) * (sum + m) * x / ((a + 2 * m) * (above + 2 * m)); }
};

} // namespace

// Every step scaled to the denominator 1: good for every argument.
static double scaled_fraction(const Coefficients& c) noexcept
{
    double am = 1, bm = 1, az = 1, bz = c.start();
    for (int m = 1; m <= s_steps; ++m) {
        const double d = c.even(m), e = c.odd(m);
        const double ap = az + d * am, bp = bz + d * bm;
        const double app = ap + e * az, bpp = bp + e * bz;
        const double previous = az;
        const double reciprocal = 1 / bpp;
        am = ap * reciprocal;
        bm = bp * reciprocal;
        az = app * reciprocal;
        bz = 1;
        const double change = std::fabs(az - previous), bound = s_tolerance * std::fabs(az);
        if (change < bound)
            return az;
        if (!(change >= bound)) // once a NaN, always a NaN
            break;
    }
    return distr_error_value;
}

// The same without scaling, where the coefficients are of the order of 1: four steps' coefficients are divided ahead of
// the chain from step to step, in which no division is left.
static double unscaled_fraction(const Coefficients& c) noexcept
{
    constexpr int block = 4;
    static_assert(s_steps % block == 0);
    constexpr double large = 0x1p500, small = 0x1p-500;
    double am = 1, bm = 1, az = 1, bz = c.start();
    double previous = az;
    for (int m = 1; m <= s_steps; m += block) {
        double even[block], odd[block];
        for (int i = 0; i < block; ++i) {
            even[i] = c.even(m + i);
            odd[i] = c.odd(m + i);
        }
        for (int i = 0; i < block; ++i) {
            const double ap = az + even[i] * am, bp = bz + even[i] * bm;
            az = ap + odd[i] * az;
            bz = bp + odd[i] * bz;
            am = ap;
            bm = bp;
            const double value = az / bz;
            const double change = std::fabs(value - previous), bound = s_tolerance * std::fabs(value);
            if (change < bound)
                return value;
            if (!(change >= bound))
                return distr_error_value;
            previous = value;
        }
        const double size = std::fabs(bz);
        if (size > large || size < small) [[unlikely]] {
            const double factor = size > large ? small : large;
            am *= factor;
            bm *= factor;
            az *= factor;
            bz *= factor;
        }
    }
    return distr_error_value;
}

double beta_fraction(double a, double b, double x) noexcept
{
    const Coefficients c(a, b, x);
    const bool tame = a > 0 && b > 0 && c.sum < 1e100 && x >= 0 && x <= 1 && c.sum * x <= 2 * c.above;
    return tame ? unscaled_fraction(c) : scaled_fraction(c);
}

static inline double beta_weight(double a, double b, double x, double complement) noexcept
{
    static constinit QMML_THREAD_LOCAL LnGammaMemo s_sum, s_first, s_second;
    if (x == 0 || x == 1)
        return 0;
    const LogPair ln = log_pair(x, complement);
    return elementary::exp(s_sum(a + b) - s_first(a) - s_second(b) + a * ln.first + b * ln.second);
}

double incomplete_beta(double a, double b, double x) noexcept
{
    if (x < 0 || x > 1)
        return distr_error_value;
    const double complement = 1 - x;
    const bool lower = x < (a + 1) / (a + b + 2);
    const double weight = beta_weight(a, b, x, complement); // ahead of the loop, which does not wait for it
    const double fraction = lower ? beta_fraction(a, b, x) : beta_fraction(b, a, complement);
    if (fraction == distr_error_value)
        return distr_error_value;
    return lower ? weight * fraction / a : 1 - weight * fraction / b;
}

double guarded_incomplete_beta(double a, double b, double x) noexcept
{
    if (platform::unmasked_faults() == 0) [[likely]]
        return incomplete_beta(a, b, x);
    const platform::FloatGuard guard;
    const double value = in_place([=] { return incomplete_beta(a, b, x); });
    return guard.faulted(platform::fault::serious) ? distr_error_value : value;
}

double f_upper_tail(double df1, double df2, double f) noexcept
{
    if (df1 < 0.01 || df2 < 0.01 || f <= 0)
        return 1;
    const double a = df1 / 2, b = df2 / 2;
    const double x = b / (b + a * f);
    if (x < 0 || x > 1)
        return 1;
    return guarded_incomplete_beta(b, a, x);
}

static double report(double value) noexcept
{
    return value == distr_error_value ? distr_fail() : distr_ok(value);
}

} // namespace qmml

double betacf(double a, double b, double x)
{
    return qmml::shielded([=] { return qmml::report(qmml::beta_fraction(a, b, x)); });
}

double betai(double a, double b, double x)
{
    return qmml::report(qmml::guarded_incomplete_beta(a, b, x));
}

// The early results leave the last error as it was.
double xftest(double df1, double df2, double f)
{
    return qmml::shielded([=] {
        const double value = qmml::f_upper_tail(df1, df2, f);
        if (df1 < 0.01 || df2 < 0.01 || f <= 0)
            return value;
        return qmml::report(value);
    });
}
