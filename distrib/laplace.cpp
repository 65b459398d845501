#include <qmml/distrib.h>

#include "core/elementary.h"
#include "distrib/arguments.h"

namespace qmml {

template <double (*Exp)(double) noexcept>
static double laplace_density_formula(double x, double location, double scale) noexcept
{
    return distr_ok(0.5 * Exp(-std::abs(standardised(x, location, scale))) / scale);
}

static double laplace_density(double x, double location, double scale) noexcept
{
    return scale <= 0 ? distr_fail() : laplace_density_formula<elementary::exp>(x, location, scale);
}

template <double (*Exp)(double) noexcept>
static double laplace_lower_formula(double x, double location, double scale) noexcept
{
    const double z = standardised(x, location, scale);
    const double e = Exp(-std::abs(z));
    return distr_ok(z < 0 ? 0.5 * e : (1 - e + 1) * 0.5); // exactly 0.5 at the location
}

static double laplace_lower(double x, double location, double scale) noexcept
{
    return scale <= 0 ? distr_fail() : laplace_lower_formula<elementary::exp>(x, location, scale);
}

// Leaves the last error alone.
template <double (*Log)(double) noexcept>
static double laplace_quantile_formula(double p, double location, double scale) noexcept
{
    const bool below = p <= 0.5;
    const double ln = Log(2 * (below ? p : 1 - p));
    return location + scale * (below ? ln : -ln);
}

static double laplace_quantile(double p, double location, double scale) noexcept
{
    return laplace_quantile_formula<elementary::log>(clamped(p), location, scale);
}

} // namespace qmml

double d_laplace(double x, double location, double scale)
{
    return qmml::shielded<qmml::laplace_density_formula<qmml::elementary::exp_ordinary>, qmml::laplace_density>(
        qmml::near_point(x, location, scale), x, location, scale);
}

double i_laplace(double x, double location, double scale)
{
    return qmml::shielded<qmml::laplace_lower_formula<qmml::elementary::exp_ordinary>, qmml::laplace_lower>(
        qmml::near_point(x, location, scale), x, location, scale);
}

double v_laplace(double p, double location, double scale)
{
    return qmml::guarded<qmml::laplace_quantile_formula<qmml::elementary::log_ordinary>, qmml::laplace_quantile>(
        qmml::calm_quantile(p, location, scale), p, location, scale);
}
