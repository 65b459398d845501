#include <qmml/distrib.h>

#include "core/elementary.h"
#include "distrib/arguments.h"

namespace qmml {

static double pareto_density_formula(double x, double shape) noexcept
{
    return distr_ok(shape * elementary::pow(x, -(shape + 1)));
}

static double pareto_density(double x, double shape) noexcept
{
    if (shape <= 0)
        return distr_fail();
    return x < 1 ? distr_ok(0) : pareto_density_formula(x, shape);
}

static double pareto_lower_formula(double x, double shape) noexcept
{
    return distr_ok(1 - elementary::pow(x, -shape));
}

static double pareto_lower(double x, double shape) noexcept
{
    if (shape <= 0)
        return distr_fail();
    return x < 1 ? distr_ok(0) : pareto_lower_formula(x, shape);
}

static double pareto_quantile_formula(double p, double shape) noexcept
{
    return distr_ok(elementary::pow(1 - p, -1 / shape));
}

static double pareto_quantile(double p, double shape) noexcept
{
    return shape <= 0 ? distr_fail() : pareto_quantile_formula(clamped(p), shape);
}

static bool calm_pareto(double x, double shape) noexcept
{
    return between(x, 1.0, s_calm_limit) && moderate_scale(shape);
}

// 1 - p is at least 2^-53: no overflow from a sixteenth upwards.
static bool calm_pareto_quantile(double p, double shape) noexcept
{
    return inner_probability(p) && between(shape, 0x1p-4, s_calm_limit);
}

} // namespace qmml

double d_pareto(double x, double shape)
{
    return qmml::shielded<qmml::pareto_density_formula, qmml::pareto_density>(qmml::calm_pareto(x, shape), x, shape);
}

double i_pareto(double x, double shape)
{
    return qmml::shielded<qmml::pareto_lower_formula, qmml::pareto_lower>(qmml::calm_pareto(x, shape), x, shape);
}

double v_pareto(double p, double shape)
{
    return qmml::guarded<qmml::pareto_quantile_formula, qmml::pareto_quantile>(qmml::calm_pareto_quantile(p, shape), p,
                                                                               shape);
}
