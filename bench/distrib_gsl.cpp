// The GNU Scientific Library.
#include "distrib_bench.h"

#include <gsl/gsl_cdf.h>
#include <gsl/gsl_errno.h>
#include <gsl/gsl_randist.h>
#include <gsl/gsl_sf_gamma.h>

namespace qmml::bench {
namespace {

void add_gsl(Suite& suite)
{
    gsl_set_error_handler_off(); // it would end the program
    const auto add = [&](const std::string& name, auto function) { suite.add(name, "gsl", function); };
    const DistributionParameters p = distribution_parameters;
    add("d_beta", [p](double x) { return gsl_ran_beta_pdf(x, p.beta_a, p.beta_b); });
    add("i_beta", [p](double x) { return gsl_cdf_beta_P(x, p.beta_a, p.beta_b); });
    add("v_beta", [p](double q) { return gsl_cdf_beta_Pinv(q, p.beta_a, p.beta_b); });
    add("d_cauchy", [p](double x) { return gsl_ran_cauchy_pdf(x - p.location, p.scale); });
    add("i_cauchy", [p](double x) { return gsl_cdf_cauchy_P(x - p.location, p.scale); });
    add("v_cauchy", [p](double q) { return gsl_cdf_cauchy_Pinv(q, p.scale) + p.location; });
    add("d_chi2", [p](double x) { return gsl_ran_chisq_pdf(x, p.chi2_df); });
    add("i_chi2", [p](double x) { return gsl_cdf_chisq_P(x, p.chi2_df); });
    add("v_chi2", [p](double q) { return gsl_cdf_chisq_Pinv(q, p.chi2_df); });
    const double mean = 1 / p.expon_rate;
    add("d_expon", [mean](double x) { return gsl_ran_exponential_pdf(x, mean); });
    add("i_expon", [mean](double x) { return gsl_cdf_exponential_P(x, mean); });
    add("v_expon", [mean](double q) { return gsl_cdf_exponential_Pinv(q, mean); });
    // Its Gumbel of type 1 has a rate and a factor: exp(-b exp(-a x)).
    const double rate = 1 / p.scale, factor = std::exp(p.location / p.scale);
    add("d_extreme", [=](double x) { return gsl_ran_gumbel1_pdf(x, rate, factor); });
    add("i_extreme", [=](double x) { return gsl_cdf_gumbel1_P(x, rate, factor); });
    add("v_extreme", [=](double q) { return gsl_cdf_gumbel1_Pinv(q, rate, factor); });
    add("d_f", [p](double x) { return gsl_ran_fdist_pdf(x, p.f_df1, p.f_df2); });
    add("i_f", [p](double x) { return gsl_cdf_fdist_P(x, p.f_df1, p.f_df2); });
    add("v_f", [p](double q) { return gsl_cdf_fdist_Pinv(q, p.f_df1, p.f_df2); });
    add("d_gamma", [p](double x) { return gsl_ran_gamma_pdf(x, p.gamma_shape, 1); });
    add("i_gamma", [p](double x) { return gsl_cdf_gamma_P(x, p.gamma_shape, 1); });
    add("v_gamma", [p](double q) { return gsl_cdf_gamma_Pinv(q, p.gamma_shape, 1); });
    add("d_laplace", [p](double x) { return gsl_ran_laplace_pdf(x - p.location, p.scale); });
    add("i_laplace", [p](double x) { return gsl_cdf_laplace_P(x - p.location, p.scale); });
    add("v_laplace", [p](double q) { return gsl_cdf_laplace_Pinv(q, p.scale) + p.location; });
    add("d_logis", [p](double x) { return gsl_ran_logistic_pdf(x - p.location, p.scale); });
    add("i_logis", [p](double x) { return gsl_cdf_logistic_P(x - p.location, p.scale); });
    add("v_logis", [p](double q) { return gsl_cdf_logistic_Pinv(q, p.scale) + p.location; });
    add("d_lognorm", [p](double x) { return gsl_ran_lognormal_pdf(x, p.lognorm_mu, p.lognorm_sigma); });
    add("i_lognorm", [p](double x) { return gsl_cdf_lognormal_P(x, p.lognorm_mu, p.lognorm_sigma); });
    add("v_lognorm", [p](double q) { return gsl_cdf_lognormal_Pinv(q, p.lognorm_mu, p.lognorm_sigma); });
    add("d_normal", [p](double x) { return gsl_ran_gaussian_pdf(x - p.location, p.scale); });
    add("i_normal", [p](double x) { return gsl_cdf_gaussian_P(x - p.location, p.scale); });
    add("v_normal", [p](double q) { return gsl_cdf_gaussian_Pinv(q, p.scale) + p.location; });
    add("d_pareto", [p](double x) { return gsl_ran_pareto_pdf(x, p.pareto_shape, 1); });
    add("i_pareto", [p](double x) { return gsl_cdf_pareto_P(x, p.pareto_shape, 1); });
    add("v_pareto", [p](double q) { return gsl_cdf_pareto_Pinv(q, p.pareto_shape, 1); });
    add("d_rayleigh", [p](double x) { return gsl_ran_rayleigh_pdf(x, p.rayleigh_scale); });
    add("i_rayleigh", [p](double x) { return gsl_cdf_rayleigh_P(x, p.rayleigh_scale); });
    add("v_rayleigh", [p](double q) { return gsl_cdf_rayleigh_Pinv(q, p.rayleigh_scale); });
    add("d_student", [p](double x) { return gsl_ran_tdist_pdf(x, p.student_df); });
    add("i_student", [p](double x) { return gsl_cdf_tdist_P(x, p.student_df); });
    add("v_student", [p](double q) { return gsl_cdf_tdist_Pinv(q, p.student_df); });
    add("d_weibull",
        [p](double x) { return gsl_ran_weibull_pdf(x - p.weibull_location, p.weibull_scale, p.weibull_shape); });
    add("i_weibull",
        [p](double x) { return gsl_cdf_weibull_P(x - p.weibull_location, p.weibull_scale, p.weibull_shape); });
    add("v_weibull",
        [p](double q) { return gsl_cdf_weibull_Pinv(q, p.weibull_scale, p.weibull_shape) + p.weibull_location; });

    const auto n = static_cast<unsigned>(p.binom_n), large_n = static_cast<unsigned>(p.binom_large_n);
    const auto count = [](double k) { return static_cast<unsigned>(k); };
    add("d_binom", [=](double k) { return gsl_ran_binomial_pdf(count(k), p.binom_p, n); });
    add("i_binom", [=](double k) { return gsl_cdf_binomial_P(count(k), p.binom_p, n); });
    add("d_binom_n1000", [=](double k) { return gsl_ran_binomial_pdf(count(k), p.binom_p, large_n); });
    add("i_binom_n1000", [=](double k) { return gsl_cdf_binomial_P(count(k), p.binom_p, large_n); });
    // It counts the trials up to the success and not the failures before it.
    add("d_geom", [=](double k) { return gsl_ran_geometric_pdf(count(k) + 1, p.geom_p); });
    add("i_geom", [=](double k) { return gsl_cdf_geometric_P(count(k) + 1, p.geom_p); });
    add("i_geom_far", [=](double k) { return gsl_cdf_geometric_P(count(k) + 1, p.geom_far_p); });
    add("d_poisson", [=](double k) { return gsl_ran_poisson_pdf(count(k), p.poisson_mean); });
    add("i_poisson", [=](double k) { return gsl_cdf_poisson_P(count(k), p.poisson_mean); });

    add("gammln", [](double x) { return gsl_sf_lngamma(x); });
    add("gammq", [p](double x) { return gsl_sf_gamma_inc_Q(p.gamma_shape, x); });
    add("betai", [p](double x) { return gsl_sf_beta_inc(p.beta_a, p.beta_b, x); });
    add("xftest", [p](double x) { return gsl_cdf_fdist_Q(x, p.f_df1, p.f_df2); });
    add("invnrm", [p](double q) { return gsl_cdf_tdist_Pinv(q, p.student_df); });
    add("invistudent_t", [p](double q) { return gsl_cdf_tdist_Qinv(q / 2, p.student_df); });
}

const Peer<Suite&> s_gsl(add_gsl);

} // namespace
} // namespace qmml::bench
