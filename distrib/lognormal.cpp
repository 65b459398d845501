#include <qmml/distrib.h>

#include "core/elementary.h"
#include "distrib/arguments.h"
#include "distrib/inverse_normal.h"
#include "distrib/normal.h"

namespace qmml {

static constexpr double s_least_lognormal = 1e-6; // the lower tail is 0 below it

static double lognormal_density_formula(double x, double mu, double sigma) noexcept
{
    const double d = elementary::log(x) - mu;
    return distr_ok(elementary::exp(-(d * d) / (2 * sigma * sigma)) / (s_sqrt_2pi * x * sigma));
}

static double lognormal_density(double x, double mu, double sigma) noexcept
{
    return sigma <= 0 || x <= 0 ? distr_ok(0) : lognormal_density_formula(x, mu, sigma);
}

static double lognormal_lower_formula(double x, double mu, double sigma) noexcept
{
    return distr_ok(normal_lower((elementary::log(x) - mu) / sigma));
}

static double lognormal_lower(double x, double mu, double sigma) noexcept
{
    return x < s_least_lognormal ? distr_ok(0) : lognormal_lower_formula(x, mu, sigma);
}

static double lognormal_quantile_formula(double p, double mu, double sigma) noexcept
{
    bool fault = false;
    double z = inverse_normal(p, &fault);
    z = fault ? distr_fail() : distr_ok(z); // the failure's value goes through the formula, its code stays
    return elementary::exp(z * sigma + mu);
}

static double lognormal_quantile(double p, double mu, double sigma) noexcept
{
    return lognormal_quantile_formula(clamped(p), mu, sigma);
}

static bool calm_lognormal(double x, double mu, double sigma) noexcept
{
    return between(x, s_least_lognormal, s_calm_limit) && moderate(mu) && moderate_scale(sigma);
}

// |z| is below 38 for any p that is not 0 or 1.
static bool calm_lognormal_quantile(double p, double mu, double sigma) noexcept
{
    return inner_probability(p) && within(mu, 300.0) && between(sigma, 1 / s_calm_limit, 10.0);
}

} // namespace qmml

double d_lognorm(double x, double mu, double sigma)
{
    return qmml::shielded<qmml::lognormal_density_formula, qmml::lognormal_density>(qmml::calm_lognormal(x, mu, sigma),
                                                                                    x, mu, sigma);
}

double i_lognorm(double x, double mu, double sigma)
{
    return qmml::shielded<qmml::lognormal_lower_formula, qmml::lognormal_lower>(qmml::calm_lognormal(x, mu, sigma), x,
                                                                                mu, sigma);
}

double v_lognorm(double p, double mu, double sigma)
{
    return qmml::guarded<qmml::lognormal_quantile_formula, qmml::lognormal_quantile>(
        qmml::calm_lognormal_quantile(p, mu, sigma), p, mu, sigma);
}
