#include <qmml/distrib.h>

#include "core/elementary.h"
#include "distrib/incomplete_beta.h"
#include "distrib/inverse_beta.h"
#include "distrib/inverse_normal.h"
#include "distrib/log_gamma.h"
#include "distrib/normal.h"
#include "distrib/parameters.h"
#include "platform/thread_local.h"

#include <algorithm>
#include <cmath>

namespace qmml {

// Gamma((df + 1) / 2) / (Gamma(df / 2) Gamma(1/2) sqrt(df)), kept for the last df.
static double student_coefficient(double df) noexcept
{
    static constinit QMML_THREAD_LOCAL double s_df = 0, s_coefficient = 0;
    if (!same_bits(df, s_df)) {
        const auto gamma = [](double x) { return elementary::exp(ln_gamma(x)); };
        const double coefficient = gamma((df + 1) / 2) / (gamma(df / 2) * gamma(0.5) * std::sqrt(df));
        if (!calm_parameters(df)) // to be computed each time, for the faults
            return coefficient;
        s_coefficient = coefficient;
        s_df = df;
    }
    return s_coefficient;
}

static double student_density(double t, double df) noexcept
{
    if (df < 1)
        return 0; // the last error stays
    if (df > 300)
        return distr_ok(normal_density(t));
    return distr_ok(student_coefficient(df) * elementary::exp(-(df + 1) / 2 * elementary::log(1 + t * t / df)));
}

static double student_lower(double t, double df) noexcept
{
    if (df < 0.01)
        return distr_fail();
    if (df >= 32000)
        return distr_ok(normal_lower(t));
    const double upper = f_upper_tail(1, df, t * t);
    if (upper == distr_error_value)
        return distr_fail();
    const double half = 0.5 * upper;
    return distr_ok(t <= 0 ? half : 1 - half);
}

static double student_quantile(double p, double df) noexcept
{
    if (df > 32000)
        return v_normal(p, 0, 1);
    const Quantile f = inverse_f(1 - 2 * std::min(p, 1 - p), 1, df);
    if (f.fault || f.value < 0)
        return distr_fail();
    const double t = std::sqrt(f.value);
    return distr_ok(p < 0.5 ? -t : t);
}

// A whole number of degrees, as its caller truncated it. The search has its own accuracy.
static double student_two_sided(double p, double n) noexcept
{
    const double a = n / 2;
    static constinit QMML_THREAD_LOCAL LnGammaMemo s_first, s_half, s_sum;
    const double ln_beta = s_first(a) + s_half(0.5) - s_sum(a + 0.5);
    const Quantile x = inverse_beta(p, a, 0.5, ln_beta, student_accuracy);
    return x.fault ? 0 : std::sqrt((n - x.value * n) / x.value);
}

} // namespace qmml

double d_student(double x, double df)
{
    return qmml::shielded<qmml::student_density>(qmml::moderate(x) && qmml::calm_parameters(df), x, df);
}

double i_student(double x, double df)
{
    return qmml::shielded([=] { return qmml::student_lower(x, df); });
}

double v_student(double p, double df)
{
    return qmml::guarded([=] { return qmml::student_quantile(p, df); });
}

double invistudent_t(double p, double df)
{
    return qmml::shielded([=] {
        const double n = std::trunc(df);
        if (!(n >= 1 && p > 0 && p < 1))
            return 0.0;
        return qmml::student_two_sided(p, n);
    });
}
