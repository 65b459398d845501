#include <qmml/distrib.h>

#include "core/elementary.h"
#include "distrib/incomplete_beta.h"
#include "distrib/inverse_beta.h"
#include "distrib/log_gamma.h"
#include "distrib/log_pair.h"
#include "distrib/parameters.h"
#include "platform/thread_local.h"

namespace qmml {

namespace {

// What the density takes from the degrees of freedom alone, kept for the last ones.
struct FDensityTerms {
    double df1, df2;
    double ratio;
    double ln_coefficient; // ln(Gamma((df1 + df2) / 2) / (Gamma(df1 / 2) Gamma(df2 / 2)) (df1 / df2)^(df1 / 2))

    static FDensityTerms of(double df1, double df2) noexcept
    {
        const double ratio = df1 / df2;
        const double ln_gammas = ln_gamma((df1 + df2) / 2) - ln_gamma(df1 / 2) - ln_gamma(df2 / 2);
        return {df1, df2, ratio, ln_gammas + df1 / 2 * elementary::log(ratio)};
    }
};

} // namespace

static double f_density(double x, double df1, double df2) noexcept
{
    static constinit QMML_THREAD_LOCAL FDensityTerms s_terms{};
    if (df1 < 1 || df2 < 1)
        return distr_fail();
    if (x <= 0)
        return distr_ok(0);
    const auto density = [=](const FDensityTerms& terms) {
        const LogPair ln = log_pair(x, 1 + terms.ratio * x);
        return distr_finite(
            elementary::exp(terms.ln_coefficient + (df1 / 2 - 1) * ln.first - (df1 + df2) / 2 * ln.second));
    };
    if (!same_bits(s_terms.df1, df1) || !same_bits(s_terms.df2, df2)) {
        if (!calm_parameters(df1, df2)) // to be computed each time, for the faults
            return density(FDensityTerms::of(df1, df2));
        s_terms = FDensityTerms::of(df1, df2);
    }
    return density(s_terms);
}

static double f_lower(double x, double df1, double df2) noexcept
{
    if (df1 < 0.01 || df2 < 0.01)
        return distr_fail();
    if (x <= 0)
        return distr_ok(0);
    const double upper = f_upper_tail(df1, df2, x);
    return upper == distr_error_value ? distr_fail() : distr_ok(1 - upper);
}

static double f_quantile(double p, double df1, double df2) noexcept
{
    const Quantile x = inverse_f(p, df1, df2);
    return x.fault ? distr_fail() : distr_ok(x.value);
}

} // namespace qmml

double d_f(double x, double df1, double df2)
{
    return qmml::shielded<qmml::f_density>(qmml::calm_positive(x) && qmml::calm_parameters(df1, df2), x, df1, df2);
}

double i_f(double x, double df1, double df2)
{
    return qmml::shielded([=] { return qmml::f_lower(x, df1, df2); });
}

double v_f(double p, double df1, double df2)
{
    return qmml::guarded([=] { return qmml::f_quantile(p, df1, df2); });
}
