#include <qmml/distrib.h>

#include "core/elementary.h"
#include "distrib/incomplete_gamma.h"
#include "distrib/inverse_chi_square.h"
#include "distrib/log_gamma.h"
#include "distrib/parameters.h"
#include "platform/thread_local.h"

namespace qmml {

static double chi_square_density(double x, double df) noexcept
{
    static constinit QMML_THREAD_LOCAL LnGammaMemo s_half;
    constexpr double ln_2 = 0.6931471805599453;
    if (df < 0.01)
        return distr_fail();
    if (x <= 0)
        return distr_ok(0);
    const double half = df / 2;
    return distr_finite(elementary::exp((half - 1) * elementary::log(x) - x / 2 - half * ln_2 - s_half(half)));
}

static double chi_square_lower(double x, double df) noexcept
{
    if (df < 0.01)
        return distr_fail();
    if (x <= 0)
        return distr_ok(0);
    const GammaRatio lower = gamma_ratio(x / 2, df / 2);
    return lower.fault ? distr_fail() : distr_ok(lower.value);
}

static double chi_square_quantile(double p, double df) noexcept
{
    const Quantile x = inverse_chi_square(p, df);
    return x.fault ? distr_fail() : distr_ok(x.value);
}

} // namespace qmml

double d_chi2(double x, double df)
{
    return qmml::shielded<qmml::chi_square_density>(qmml::calm_positive(x) && qmml::calm_parameters(df), x, df);
}

double i_chi2(double x, double df)
{
    return qmml::shielded([=] { return qmml::chi_square_lower(x, df); });
}

double v_chi2(double p, double df)
{
    return qmml::shielded([=] { return qmml::chi_square_quantile(p, df); });
}
