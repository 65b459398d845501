#include <qmml/distrib.h>

#include "core/elementary.h"
#include "distrib/incomplete_gamma.h"
#include "distrib/log_gamma.h"
#include "distrib/parameters.h"
#include "distrib/rounding.h"
#include "platform/thread_local.h"

namespace qmml {

static double poisson_mass(double x, double lambda) noexcept
{
    static constinit QMML_THREAD_LOCAL double s_lambda = 1, s_ln_lambda = 0; // of an ordinary lambda
    if (lambda <= 0)
        return distr_fail();
    const double k = round_half_away(x);
    if (k < 0)
        return distr_ok(0);
    if (k == 0)
        return distr_ok(elementary::exp(-lambda));
    double ln_lambda = s_ln_lambda;
    if (!same_bits(lambda, s_lambda)) {
        ln_lambda = elementary::log(lambda);
        if (calm_parameters(lambda)) {
            s_ln_lambda = ln_lambda;
            s_lambda = lambda;
        }
    }
    return distr_ok(elementary::exp(k * ln_lambda - ln_gamma_tabulated(k + 1) - lambda));
}

static double poisson_lower(double x, double lambda) noexcept
{
    if (lambda <= 0)
        return distr_fail();
    const double k = round_half_away(x);
    if (k < 0)
        return distr_ok(0);
    const double upper = gamma_upper(k + 1, lambda);
    return upper == distr_error_value ? distr_fail() : distr_ok(upper);
}

} // namespace qmml

double d_poisson(double x, double lambda)
{
    const bool calm = qmml::between(x, 0.0, 0x1p30) && qmml::calm_parameters(lambda);
    return qmml::shielded<qmml::poisson_mass>(calm, x, lambda);
}

double i_poisson(double x, double lambda)
{
    return qmml::shielded([=] { return qmml::poisson_lower(x, lambda); });
}
