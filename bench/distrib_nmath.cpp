// R's standalone nmath.
#include "distrib_bench.h"

#define MATHLIB_STANDALONE 1
#include <Rmath.h> // last: it defines short names as macros

namespace qmml::bench {
namespace {

void add_nmath(Suite& suite)
{
    const auto add = [&](const std::string& name, auto function) { suite.add(name, "nmath", function); };
    const DistributionParameters p = distribution_parameters;
    add("d_beta", [p](double x) { return dbeta(x, p.beta_a, p.beta_b, 0); });
    add("i_beta", [p](double x) { return pbeta(x, p.beta_a, p.beta_b, 1, 0); });
    add("v_beta", [p](double q) { return qbeta(q, p.beta_a, p.beta_b, 1, 0); });
    add("d_cauchy", [p](double x) { return dcauchy(x, p.location, p.scale, 0); });
    add("i_cauchy", [p](double x) { return pcauchy(x, p.location, p.scale, 1, 0); });
    add("v_cauchy", [p](double q) { return qcauchy(q, p.location, p.scale, 1, 0); });
    add("d_chi2", [p](double x) { return dchisq(x, p.chi2_df, 0); });
    add("i_chi2", [p](double x) { return pchisq(x, p.chi2_df, 1, 0); });
    add("v_chi2", [p](double q) { return qchisq(q, p.chi2_df, 1, 0); });
    const double mean = 1 / p.expon_rate;
    add("d_expon", [mean](double x) { return dexp(x, mean, 0); });
    add("i_expon", [mean](double x) { return pexp(x, mean, 1, 0); });
    add("v_expon", [mean](double q) { return qexp(q, mean, 1, 0); });
    add("d_f", [p](double x) { return df(x, p.f_df1, p.f_df2, 0); });
    add("i_f", [p](double x) { return pf(x, p.f_df1, p.f_df2, 1, 0); });
    add("v_f", [p](double q) { return qf(q, p.f_df1, p.f_df2, 1, 0); });
    add("d_gamma", [p](double x) { return dgamma(x, p.gamma_shape, 1, 0); });
    add("i_gamma", [p](double x) { return pgamma(x, p.gamma_shape, 1, 1, 0); });
    add("v_gamma", [p](double q) { return qgamma(q, p.gamma_shape, 1, 1, 0); });
    add("d_logis", [p](double x) { return dlogis(x, p.location, p.scale, 0); });
    add("i_logis", [p](double x) { return plogis(x, p.location, p.scale, 1, 0); });
    add("v_logis", [p](double q) { return qlogis(q, p.location, p.scale, 1, 0); });
    add("d_lognorm", [p](double x) { return dlnorm(x, p.lognorm_mu, p.lognorm_sigma, 0); });
    add("i_lognorm", [p](double x) { return plnorm(x, p.lognorm_mu, p.lognorm_sigma, 1, 0); });
    add("v_lognorm", [p](double q) { return qlnorm(q, p.lognorm_mu, p.lognorm_sigma, 1, 0); });
    add("d_normal", [p](double x) { return dnorm4(x, p.location, p.scale, 0); });
    add("i_normal", [p](double x) { return pnorm5(x, p.location, p.scale, 1, 0); });
    add("v_normal", [p](double q) { return qnorm5(q, p.location, p.scale, 1, 0); });
    // A Rayleigh variate is a Weibull one of shape 2.
    const double rayleigh_scale = p.rayleigh_scale * std::sqrt(2.0);
    add("d_rayleigh", [rayleigh_scale](double x) { return dweibull(x, 2, rayleigh_scale, 0); });
    add("i_rayleigh", [rayleigh_scale](double x) { return pweibull(x, 2, rayleigh_scale, 1, 0); });
    add("v_rayleigh", [rayleigh_scale](double q) { return qweibull(q, 2, rayleigh_scale, 1, 0); });
    add("d_student", [p](double x) { return dt(x, p.student_df, 0); });
    add("i_student", [p](double x) { return pt(x, p.student_df, 1, 0); });
    add("v_student", [p](double q) { return qt(q, p.student_df, 1, 0); });
    add("d_weibull", [p](double x) { return dweibull(x - p.weibull_location, p.weibull_shape, p.weibull_scale, 0); });
    add("i_weibull",
        [p](double x) { return pweibull(x - p.weibull_location, p.weibull_shape, p.weibull_scale, 1, 0); });
    add("v_weibull",
        [p](double q) { return qweibull(q, p.weibull_shape, p.weibull_scale, 1, 0) + p.weibull_location; });

    add("d_binom", [p](double k) { return dbinom(k, p.binom_n, p.binom_p, 0); });
    add("i_binom", [p](double k) { return pbinom(k, p.binom_n, p.binom_p, 1, 0); });
    add("d_binom_n1000", [p](double k) { return dbinom(k, p.binom_large_n, p.binom_p, 0); });
    add("i_binom_n1000", [p](double k) { return pbinom(k, p.binom_large_n, p.binom_p, 1, 0); });
    add("d_geom", [p](double k) { return dgeom(k, p.geom_p, 0); });
    add("i_geom", [p](double k) { return pgeom(k, p.geom_p, 1, 0); });
    add("i_geom_far", [p](double k) { return pgeom(k, p.geom_far_p, 1, 0); });
    add("d_poisson", [p](double k) { return dpois(k, p.poisson_mean, 0); });
    add("i_poisson", [p](double k) { return ppois(k, p.poisson_mean, 1, 0); });

    add("gammln", [](double x) { return lgammafn(x); });
    add("gammq", [p](double x) { return pgamma(x, p.gamma_shape, 1, 0, 0); });
    add("betai", [p](double x) { return pbeta(x, p.beta_a, p.beta_b, 1, 0); });
    add("xftest", [p](double x) { return pf(x, p.f_df1, p.f_df2, 0, 0); });
    add("prtrng_v10_r3", [p](double x) { return ptukey(x, 1, p.range_groups, p.range_df, 1, 0); });
    add("prtrng_infinite_r3", [p](double x) { return ptukey(x, 1, p.range_groups, 1e9, 1, 0); });
    add("prtrng_v60_r20", [](double x) { return ptukey(x, 1, 20, 60, 1, 0); });
    add("qtrng_middle_v10_r3", [p](double q) { return qtukey(q, 1, p.range_groups, p.range_df, 1, 0); });
    add("qtrng_v10_r3", [p](double q) { return qtukey(q, 1, p.range_groups, p.range_df, 1, 0); });
    add("qtrng_v60_r20", [](double q) { return qtukey(q, 1, 20, 60, 1, 0); });
    add("invnrm", [p](double q) { return qt(q, p.student_df, 1, 0); });
    add("invistudent_t", [p](double q) { return qt(q / 2, p.student_df, 0, 0); });
}

const Peer<Suite&> s_nmath(add_nmath);

} // namespace
} // namespace qmml::bench
