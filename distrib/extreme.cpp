#include <qmml/distrib.h>

#include "core/elementary.h"
#include "distrib/arguments.h"

#include <limits>

namespace qmml {

static constexpr double s_infinity = std::numeric_limits<double>::infinity();

static double extreme_density_formula(double x, double location, double scale) noexcept
{
    const double e = elementary::exp(-standardised(x, location, scale));
    return distr_ok(e * elementary::exp(-e) / scale);
}

static double extreme_density(double x, double location, double scale) noexcept
{
    return scale <= 0 ? distr_fail() : distr_finite(extreme_density_formula(x, location, scale));
}

static double extreme_lower_formula(double x, double location, double scale) noexcept
{
    return distr_ok(elementary::exp(-elementary::exp(-standardised(x, location, scale))));
}

static double extreme_lower(double x, double location, double scale) noexcept
{
    return scale <= 0 ? distr_fail() : extreme_lower_formula(x, location, scale);
}

static double extreme_quantile_formula(double p, double location, double scale) noexcept
{
    return distr_ok(location - scale * elementary::log(-elementary::log(p)));
}

static double extreme_quantile(double p, double location, double scale) noexcept
{
    p = clamped(p);
    if (scale <= 0 || p == 0)
        return distr_fail();
    if (1 / p == s_infinity) // the reciprocal is part of the definition, an infinite one too
        return distr_ok(location - scale * s_infinity);
    return extreme_quantile_formula(p, location, scale);
}

} // namespace qmml

double d_extreme(double x, double location, double scale)
{
    return qmml::shielded<qmml::extreme_density_formula, qmml::extreme_density>(qmml::calm_exponent(x, location, scale),
                                                                                x, location, scale);
}

double i_extreme(double x, double location, double scale)
{
    return qmml::shielded<qmml::extreme_lower_formula, qmml::extreme_lower>(qmml::calm_exponent(x, location, scale), x,
                                                                            location, scale);
}

double v_extreme(double p, double location, double scale)
{
    return qmml::guarded<qmml::extreme_quantile_formula, qmml::extreme_quantile>(
        qmml::calm_quantile(p, location, scale), p, location, scale);
}
