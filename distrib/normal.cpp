#include "distrib/normal.h"

#include <qmml/distrib.h>

#include "distrib/arguments.h"
#include "distrib/inverse_normal.h"

namespace qmml {

// Checks nothing and leaves the last error alone.
static double normal_density_formula(double x, double mu, double sigma) noexcept
{
    return normal_density(standardised(x, mu, sigma)) / sigma;
}

static double normal_lower_formula(double x, double mu, double sigma) noexcept
{
    return distr_ok(normal_lower(standardised(x, mu, sigma)));
}

static double normal_lower_checked(double x, double mu, double sigma) noexcept
{
    return sigma <= 0 ? distr_fail() : normal_lower_formula(x, mu, sigma);
}

static double normal_quantile_formula(double p, double mu, double sigma) noexcept
{
    bool fault = false;
    const double z = inverse_normal(p, &fault);
    return fault ? distr_fail() : distr_ok(z * sigma + mu);
}

static double normal_quantile(double p, double mu, double sigma) noexcept
{
    return normal_quantile_formula(clamped(p), mu, sigma);
}

} // namespace qmml

double d_normal(double x, double mu, double sigma)
{
    return qmml::shielded<qmml::normal_density_formula>(qmml::calm_point(x, mu, sigma), x, mu, sigma);
}

double i_normal(double x, double mu, double sigma)
{
    return qmml::shielded<qmml::normal_lower_formula, qmml::normal_lower_checked>(qmml::calm_point(x, mu, sigma), x, mu,
                                                                                  sigma);
}

double v_normal(double p, double mu, double sigma)
{
    return qmml::shielded<qmml::normal_quantile_formula, qmml::normal_quantile>(qmml::calm_quantile(p, mu, sigma), p,
                                                                                mu, sigma);
}

double alnorm(double x, short upper)
{
    const double lower = i_normal(x, 0, 1);
    return upper == 0 ? lower : 1 - lower;
}
