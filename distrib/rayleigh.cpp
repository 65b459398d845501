#include <qmml/distrib.h>

#include "core/elementary.h"
#include "distrib/arguments.h"

namespace qmml {

static double rayleigh_density_formula(double x, double b) noexcept
{
    const double square = b * b;
    return distr_ok(x / square * elementary::exp(-(x * x) / (2 * square)));
}

static double rayleigh_density(double x, double b) noexcept
{
    if (x <= 0) // before b is looked at, and without touching the last error
        return 0;
    return b <= 0 ? distr_fail() : rayleigh_density_formula(x, b);
}

static double rayleigh_lower_formula(double x, double b) noexcept
{
    return distr_ok(1 - elementary::exp(-(x * x) / (2 * (b * b))));
}

static double rayleigh_lower(double x, double b) noexcept
{
    if (b <= 0)
        return distr_fail();
    return x <= 0 ? distr_ok(0) : rayleigh_lower_formula(x, b);
}

static double rayleigh_quantile_formula(double p, double b) noexcept
{
    return distr_ok(std::sqrt(-2 * (b * b) * elementary::log(1 - p)));
}

static double rayleigh_quantile(double p, double b) noexcept
{
    return b <= 0 ? distr_fail() : rayleigh_quantile_formula(clamped(p), b);
}

} // namespace qmml

double d_rayleigh(double x, double b)
{
    return qmml::shielded<qmml::rayleigh_density_formula, qmml::rayleigh_density>(
        qmml::moderate_scale(x) && qmml::moderate_scale(b), x, b);
}

double i_rayleigh(double x, double b)
{
    return qmml::shielded<qmml::rayleigh_lower_formula, qmml::rayleigh_lower>(
        qmml::moderate_scale(x) && qmml::moderate_scale(b), x, b);
}

double v_rayleigh(double p, double b)
{
    return qmml::guarded<qmml::rayleigh_quantile_formula, qmml::rayleigh_quantile>(
        qmml::inner_probability(p) && qmml::moderate_scale(b), p, b);
}
