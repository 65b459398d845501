#include <qmml/distrib.h>

#include "core/elementary.h"
#include "distrib/arguments.h"

namespace qmml {

static double exponential_density_formula(double x, double lambda) noexcept
{
    return distr_ok(lambda * elementary::exp(-lambda * x));
}

static double exponential_density(double x, double lambda) noexcept
{
    if (lambda <= 0)
        return distr_fail();
    if (x <= 0)
        return distr_ok(0);
    return distr_finite(exponential_density_formula(x, lambda));
}

static double exponential_lower_formula(double x, double lambda) noexcept
{
    return distr_ok(1 - elementary::exp(-lambda * x));
}

static double exponential_lower(double x, double lambda) noexcept
{
    if (lambda <= 0)
        return distr_fail();
    return x <= 0 ? distr_ok(0) : exponential_lower_formula(x, lambda);
}

static double exponential_quantile_formula(double p, double lambda) noexcept
{
    return distr_ok((0 - elementary::log(1 - p)) / lambda); // +0 at p = 0
}

static double exponential_quantile(double p, double lambda) noexcept
{
    return p >= 1 ? distr_fail() : exponential_quantile_formula(p < 0 ? 0 : p, lambda);
}

} // namespace qmml

double d_expon(double x, double lambda)
{
    return qmml::shielded<qmml::exponential_density_formula, qmml::exponential_density>(
        qmml::moderate_scale(x) && qmml::moderate_scale(lambda), x, lambda);
}

double i_expon(double x, double lambda)
{
    return qmml::shielded<qmml::exponential_lower_formula, qmml::exponential_lower>(
        qmml::moderate_scale(x) && qmml::moderate_scale(lambda), x, lambda);
}

double v_expon(double p, double lambda)
{
    return qmml::guarded<qmml::exponential_quantile_formula, qmml::exponential_quantile>(
        qmml::inner_probability(p) && qmml::moderate_scale(lambda), p, lambda);
}
