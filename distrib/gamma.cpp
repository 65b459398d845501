#include <qmml/distrib.h>

#include "core/elementary.h"
#include "distrib/incomplete_gamma.h"
#include "distrib/inverse_chi_square.h"
#include "distrib/log_gamma.h"
#include "distrib/parameters.h"
#include "platform/thread_local.h"

namespace qmml {

static double gamma_density(double x, double shape) noexcept
{
    static constinit QMML_THREAD_LOCAL LnGammaMemo s_ln_gamma;
    if (shape <= 0)
        return distr_fail();
    if (x <= 0)
        return distr_ok(0);
    return distr_finite(elementary::exp((shape - 1) * elementary::log(x) - s_ln_gamma(shape) - x));
}

static double gamma_quantile(double p, double shape) noexcept
{
    if (shape <= 0)
        return distr_fail();
    const Quantile x = inverse_chi_square(p, 2 * shape);
    return x.fault ? distr_fail() : distr_ok(x.value / 2);
}

} // namespace qmml

double d_gamma(double x, double shape)
{
    return qmml::shielded<qmml::gamma_density>(qmml::calm_positive(x) && qmml::calm_parameters(shape), x, shape);
}

// Leaves the last error alone, faults included.
double i_gamma(double x, double shape)
{
    return qmml::shielded([=] { return qmml::gamma_ratio(x, shape).value; });
}

double v_gamma(double p, double shape)
{
    return qmml::shielded([=] { return qmml::gamma_quantile(p, shape); });
}
