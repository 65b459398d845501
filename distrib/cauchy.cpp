#include <qmml/distrib.h>

#include "core/elementary.h"
#include "distrib/arguments.h"

namespace qmml {

// One unit in the last place above the double nearest to pi: callers depend on the digits.
static constexpr double s_pi = 3.1415926535897936;
static constexpr double s_inv_pi = 0.31830988618379064;

// One division less, for a scale that leaves the product in range.
static double cauchy_density_formula(double x, double location, double scale) noexcept
{
    const double z = standardised(x, location, scale);
    return distr_ok(1 / ((z * z + 1) * s_pi * scale));
}

static double cauchy_density(double x, double location, double scale) noexcept
{
    if (scale <= 0)
        return distr_fail();
    const double z = standardised(x, location, scale);
    return distr_ok(1 / ((z * z + 1) * s_pi) / scale);
}

static double cauchy_lower_formula(double x, double location, double scale) noexcept
{
    return distr_ok(elementary::atan(standardised(x, location, scale)) * s_inv_pi + 0.5);
}

static double cauchy_lower(double x, double location, double scale) noexcept
{
    return scale <= 0 ? distr_fail() : cauchy_lower_formula(x, location, scale);
}

static double cauchy_quantile_formula(double p, double location, double scale) noexcept
{
    return distr_ok(location + scale * elementary::tan((p - 0.5) * s_pi));
}

static double cauchy_quantile(double p, double location, double scale) noexcept
{
    return scale <= 0 ? distr_fail() : cauchy_quantile_formula(zero_outside(p), location, scale);
}

} // namespace qmml

double d_cauchy(double x, double location, double scale)
{
    return qmml::shielded<qmml::cauchy_density_formula, qmml::cauchy_density>(qmml::calm_point(x, location, scale), x,
                                                                              location, scale);
}

double i_cauchy(double x, double location, double scale)
{
    return qmml::shielded<qmml::cauchy_lower_formula, qmml::cauchy_lower>(qmml::calm_point(x, location, scale), x,
                                                                          location, scale);
}

double v_cauchy(double p, double location, double scale)
{
    return qmml::guarded<qmml::cauchy_quantile_formula, qmml::cauchy_quantile>(qmml::calm_quantile(p, location, scale),
                                                                               p, location, scale);
}
