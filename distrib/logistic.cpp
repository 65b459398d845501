#include <qmml/distrib.h>

#include "core/elementary.h"
#include "distrib/arguments.h"

#include <limits>

namespace qmml {

static constexpr double s_infinity = std::numeric_limits<double>::infinity();
static constexpr double s_least_scale = 1e-6; // of the lower tail, which is 0 below it

// One division, with room for the square and the scale.
static double logistic_density_formula(double x, double location, double scale) noexcept
{
    const double e = elementary::exp_ordinary(-standardised(x, location, scale));
    return distr_ok(e / ((1 + e) * (1 + e) * scale));
}

static double logistic_density(double x, double location, double scale) noexcept
{
    if (scale <= 0)
        return distr_fail();
    const double e = elementary::exp(-standardised(x, location, scale));
    if (e == s_infinity) // times 0 it would be a NaN
        return distr_ok(0);
    const double r = 1 / (1 + e);
    return distr_ok(e * r * r / scale);
}

// Leaves the last error alone.
template <double (*Exp)(double) noexcept>
static double logistic_lower_formula(double x, double location, double scale) noexcept
{
    return 1 / (1 + Exp(-standardised(x, location, scale)));
}

static double logistic_lower(double x, double location, double scale) noexcept
{
    return scale < s_least_scale ? 0 : logistic_lower_formula<elementary::exp>(x, location, scale);
}

template <double (*Log)(double) noexcept>
static double logistic_quantile_formula(double p, double location, double scale) noexcept
{
    return distr_ok(location + scale * Log(p / (1 - p)));
}

static double logistic_quantile(double p, double location, double scale) noexcept
{
    return p == 1 ? distr_fail() : logistic_quantile_formula<elementary::log>(zero_outside(p), location, scale);
}

} // namespace qmml

double d_logis(double x, double location, double scale)
{
    return qmml::shielded<qmml::logistic_density_formula, qmml::logistic_density>(qmml::near_point(x, location, scale),
                                                                                  x, location, scale);
}

double i_logis(double x, double location, double scale)
{
    const bool calm = qmml::near_point(x, location, scale) && scale >= qmml::s_least_scale;
    return qmml::shielded<qmml::logistic_lower_formula<qmml::elementary::exp_ordinary>, qmml::logistic_lower>(
        calm, x, location, scale);
}

double v_logis(double p, double location, double scale)
{
    return qmml::guarded<qmml::logistic_quantile_formula<qmml::elementary::log_ordinary>, qmml::logistic_quantile>(
        qmml::calm_quantile(p, location, scale), p, location, scale);
}
