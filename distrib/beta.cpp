#include <qmml/distrib.h>

#include "core/elementary.h"
#include "distrib/incomplete_beta.h"
#include "distrib/inverse_beta.h"
#include "distrib/log_gamma.h"
#include "distrib/log_pair.h"
#include "distrib/parameters.h"
#include "platform/thread_local.h"

namespace qmml {

static double beta_density(double x, double a, double b) noexcept
{
    static constinit QMML_THREAD_LOCAL LnGammaMemo s_sum, s_first, s_second;
    if (a <= 0 || b <= 0)
        return distr_fail();
    if (x <= 0 || x >= 1) // a NaN goes on, and fails as not finite
        return distr_ok(0);
    const LogPair ln = log_pair(x, 1 - x);
    return distr_finite(
        elementary::exp((a - 1) * ln.first + (b - 1) * ln.second + s_sum(a + b) - s_first(a) - s_second(b)));
}

static double beta_lower(double x, double a, double b) noexcept
{
    if (x < 1e-6)
        return distr_ok(0);
    if (x >= 1)
        return distr_ok(1);
    const double lower = guarded_incomplete_beta(a, b, x);
    return lower == distr_error_value ? distr_fail() : distr_ok(lower);
}

static double beta_quantile(double p, double a, double b) noexcept
{
    const Quantile x = inverse_beta(p, a, b);
    return x.fault ? distr_fail() : distr_ok(x.value);
}

} // namespace qmml

double d_beta(double x, double a, double b)
{
    const bool calm = qmml::between(x, 0x1p-100, 1.0) && qmml::calm_parameters(a, b);
    return qmml::shielded<qmml::beta_density>(calm, x, a, b);
}

double i_beta(double x, double a, double b)
{
    return qmml::shielded([=] { return qmml::beta_lower(x, a, b); });
}

double v_beta(double p, double a, double b)
{
    return qmml::shielded([=] { return qmml::beta_quantile(p, a, b); });
}
