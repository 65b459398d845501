#include <qmml/distrib.h>

#include "core/elementary.h"
#include "distrib/arguments.h"
#include "platform/thread_local.h"

namespace qmml {

// ln(shape) - ln(scale), kept for the last pair.
static double ln_shape_less_ln_scale(double scale, double shape) noexcept
{
    static constinit QMML_THREAD_LOCAL double s_scale = 0, s_shape = 0, s_difference = 0;
    if (!same_bits(scale, s_scale) || !same_bits(shape, s_shape)) {
        const double difference = elementary::log(shape) - elementary::log(scale);
        if (!moderate_scale(scale) || !moderate_scale(shape)) // to be computed each time, for the faults
            return difference;
        s_difference = difference;
        s_scale = scale;
        s_shape = shape;
    }
    return s_difference;
}

static bool valid_weibull(double scale, double shape) noexcept
{
    return !(scale <= 1e-100 || shape <= 0 || shape >= 100); // a NaN passes through
}

static double weibull_density_formula(double x, double scale, double shape, double location) noexcept
{
    const double u = standardised(x, location, scale);
    return distr_ok(elementary::exp(ln_shape_less_ln_scale(scale, shape) + (shape - 1) * elementary::log(u) -
                                    elementary::pow(u, shape)));
}

static double weibull_density(double x, double scale, double shape, double location) noexcept
{
    if (!valid_weibull(scale, shape))
        return distr_fail();
    return x <= location ? distr_ok(0) : weibull_density_formula(x, scale, shape, location);
}

static double weibull_lower_formula(double x, double scale, double shape, double location) noexcept
{
    return distr_ok(1 - elementary::exp(-elementary::pow(standardised(x, location, scale), shape)));
}

static double weibull_lower(double x, double scale, double shape, double location) noexcept
{
    if (!valid_weibull(scale, shape))
        return distr_fail();
    return x <= location ? distr_ok(0) : weibull_lower_formula(x, scale, shape, location);
}

static double weibull_quantile_formula(double p, double scale, double shape, double location) noexcept
{
    const double hazard = 0 - elementary::log(1 - p); // +0 at p = 0
    return distr_ok(scale * elementary::pow(hazard, 1 / shape) + location);
}

static double weibull_quantile(double p, double scale, double shape, double location) noexcept
{
    if (scale <= 0 || shape <= 0)
        return distr_fail();
    return weibull_quantile_formula(clamped(p), scale, shape, location);
}

// The power stays below 2^1000: u below 2^10, shape below 100.
static bool calm_weibull(double x, double scale, double shape, double location) noexcept
{
    if (!calm_point(x, location, scale) || !between(shape, 1 / s_calm_limit, 100.0))
        return false;
    return between(standardised(x, location, scale), 0x1p-1000, 0x1p10);
}

static bool calm_weibull_quantile(double p, double scale, double shape, double location) noexcept
{
    return calm_quantile(p, location, scale) && between(shape, 0x1p-4, s_calm_limit);
}

} // namespace qmml

double d_weibull(double x, double scale, double shape, double location)
{
    return qmml::shielded<qmml::weibull_density_formula, qmml::weibull_density>(
        qmml::calm_weibull(x, scale, shape, location), x, scale, shape, location);
}

double i_weibull(double x, double scale, double shape, double location)
{
    return qmml::shielded<qmml::weibull_lower_formula, qmml::weibull_lower>(
        qmml::calm_weibull(x, scale, shape, location), x, scale, shape, location);
}

double v_weibull(double p, double scale, double shape, double location)
{
    return qmml::guarded<qmml::weibull_quantile_formula, qmml::weibull_quantile>(
        qmml::calm_weibull_quantile(p, scale, shape, location), p, scale, shape, location);
}
