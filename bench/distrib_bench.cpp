// The distributions and the special functions under them, sixteen points at fixed parameters, time per call.
#include "distrib_bench.h"

#include <qmml/distrib.h>

namespace qmml::bench {

const DistributionParameters distribution_parameters = {
    .beta_a = 2.5,
    .beta_b = 3.5,
    .binom_p = 0.3,
    .binom_n = 40,
    .binom_large_n = 1000,
    .chi2_df = 7,
    .expon_rate = 1.5,
    .f_df1 = 5,
    .f_df2 = 12,
    .gamma_shape = 3.5,
    .geom_p = 0.2,
    .geom_far_p = 0.002,
    .location = 1,
    .scale = 2,
    .lognorm_mu = 0.5,
    .lognorm_sigma = 0.75,
    .pareto_shape = 2.5,
    .poisson_mean = 8,
    .range_df = 10,
    .range_groups = 3,
    .rayleigh_scale = 2,
    .student_df = 9,
    .weibull_scale = 2,
    .weibull_shape = 1.7,
    .weibull_location = 0.5,
};

namespace {

std::vector<double> spread(double first, double step)
{
    std::vector<double> points;
    for (int i = 0; i < 16; ++i)
        points.push_back(first + i * step);
    return points;
}

const std::vector<double> s_probabilities = {0.001, 0.005, 0.01, 0.025, 0.05, 0.1,  0.2,  0.35,
                                             0.45,  0.6,   0.75, 0.85,  0.9,  0.95, 0.99, 0.999};

// What the slower of two methods promises: rounding of a short formula; the nine-term series under the densities
// (3e-13 in the logarithm); AS 66; the stops of the fractions and series at 1e-6 per step; AS 239; the inverses.
constexpr double s_closed = 1e-13, s_log_gamma = 1e-11, s_as66 = 1e-8, s_fraction = 5e-6, s_as239 = 1e-12;
constexpr double s_as91 = 1e-8, s_as109 = 1e-7, s_coarse_as109 = 1e-5, s_minimiser = 0.02;
// AS 190 is coarse, and its quantile stops within 0.005 of the probability.
constexpr double s_as190 = 1e-3, s_as190_quantile = 0.1;

void describe_workloads(Suite& suite)
{
    const auto family = [&](const std::string& name, const std::vector<double>& points, double density, double lower,
                            double quantile = 0) {
        suite.describe("d_" + name, points, density);
        suite.describe("i_" + name, points, lower);
        if (quantile > 0)
            suite.describe("v_" + name, s_probabilities, quantile);
    };
    family("beta", spread(0.03, 0.0625), s_log_gamma, s_fraction, s_as109);
    family("binom", spread(4, 1), s_log_gamma, s_log_gamma);
    family("binom_n1000", spread(262, 5), s_fraction, s_fraction);
    family("cauchy", spread(-14, 2), s_closed, s_closed, s_closed);
    family("chi2", spread(0.5, 1.5), s_log_gamma, s_as239, s_as91);
    family("expon", spread(0.05, 0.3), s_closed, s_closed, s_closed);
    family("extreme", spread(-3, 1.1), s_closed, s_closed, s_closed);
    family("f", spread(0.1, 0.4), s_log_gamma, s_fraction, s_as109);
    family("gamma", spread(0.3, 0.8), s_log_gamma, s_as239, s_as91);
    family("geom", spread(0, 1), s_closed, s_closed);
    suite.describe("i_geom_far", spread(300, 107), s_closed);
    family("laplace", spread(-9, 1.3), s_closed, s_closed, s_closed);
    family("logis", spread(-9, 1.3), s_closed, s_closed, s_closed);
    family("lognorm", spread(0.1, 0.5), s_closed, s_as66, s_closed);
    family("normal", spread(-6, 0.9), s_closed, s_as66, s_closed);
    family("pareto", spread(1.05, 0.5), s_closed, s_closed, s_closed);
    family("poisson", spread(0, 1), s_log_gamma, s_fraction);
    family("rayleigh", spread(0.2, 0.5), s_closed, s_closed, s_closed);
    family("student", spread(-5, 0.66), s_log_gamma, s_fraction, s_as109);
    family("weibull", spread(0.6, 0.4), s_closed, s_closed, s_closed);
    suite.describe("gammln", spread(0.2, 6.3), s_log_gamma);
    suite.describe("gammq", spread(0.3, 0.8), s_fraction);
    suite.describe("betai", spread(0.03, 0.0625), s_fraction);
    suite.describe("xftest", spread(0.1, 0.4), s_fraction);
    for (const char* name : {"prtrng_v10_r3", "prtrng_infinite_r3", "prtrng_v60_r20"})
        suite.describe(name, spread(0.5, 0.4), s_as190);
    suite.describe("qtrng_middle_v10_r3", spread(0.1, 0.05), s_as190_quantile);
    for (const char* name : {"qtrng_v10_r3", "qtrng_v60_r20"})
        suite.describe(name, spread(0.9, 0.006), s_as190_quantile);
    suite.describe("invnrm", s_probabilities, s_minimiser);
    suite.describe("invistudent_t", s_probabilities, s_coarse_as109);
}

void add_continuous(Suite& suite)
{
    const auto add = [&](const std::string& name, auto function) { suite.add(name, "qmml", function); };
    const DistributionParameters p = distribution_parameters;
    add("d_beta", [p](double x) { return d_beta(x, p.beta_a, p.beta_b); });
    add("i_beta", [p](double x) { return i_beta(x, p.beta_a, p.beta_b); });
    add("v_beta", [p](double q) { return v_beta(q, p.beta_a, p.beta_b); });
    add("d_cauchy", [p](double x) { return d_cauchy(x, p.location, p.scale); });
    add("i_cauchy", [p](double x) { return i_cauchy(x, p.location, p.scale); });
    add("v_cauchy", [p](double q) { return v_cauchy(q, p.location, p.scale); });
    add("d_chi2", [p](double x) { return d_chi2(x, p.chi2_df); });
    add("i_chi2", [p](double x) { return i_chi2(x, p.chi2_df); });
    add("v_chi2", [p](double q) { return v_chi2(q, p.chi2_df); });
    add("d_expon", [p](double x) { return d_expon(x, p.expon_rate); });
    add("i_expon", [p](double x) { return i_expon(x, p.expon_rate); });
    add("v_expon", [p](double q) { return v_expon(q, p.expon_rate); });
    add("d_extreme", [p](double x) { return d_extreme(x, p.location, p.scale); });
    add("i_extreme", [p](double x) { return i_extreme(x, p.location, p.scale); });
    add("v_extreme", [p](double q) { return v_extreme(q, p.location, p.scale); });
    add("d_f", [p](double x) { return d_f(x, p.f_df1, p.f_df2); });
    add("i_f", [p](double x) { return i_f(x, p.f_df1, p.f_df2); });
    add("v_f", [p](double q) { return v_f(q, p.f_df1, p.f_df2); });
    add("d_gamma", [p](double x) { return d_gamma(x, p.gamma_shape); });
    add("i_gamma", [p](double x) { return i_gamma(x, p.gamma_shape); });
    add("v_gamma", [p](double q) { return v_gamma(q, p.gamma_shape); });
    add("d_laplace", [p](double x) { return d_laplace(x, p.location, p.scale); });
    add("i_laplace", [p](double x) { return i_laplace(x, p.location, p.scale); });
    add("v_laplace", [p](double q) { return v_laplace(q, p.location, p.scale); });
    add("d_logis", [p](double x) { return d_logis(x, p.location, p.scale); });
    add("i_logis", [p](double x) { return i_logis(x, p.location, p.scale); });
    add("v_logis", [p](double q) { return v_logis(q, p.location, p.scale); });
    add("d_lognorm", [p](double x) { return d_lognorm(x, p.lognorm_mu, p.lognorm_sigma); });
    add("i_lognorm", [p](double x) { return i_lognorm(x, p.lognorm_mu, p.lognorm_sigma); });
    add("v_lognorm", [p](double q) { return v_lognorm(q, p.lognorm_mu, p.lognorm_sigma); });
    add("d_normal", [p](double x) { return d_normal(x, p.location, p.scale); });
    add("i_normal", [p](double x) { return i_normal(x, p.location, p.scale); });
    add("v_normal", [p](double q) { return v_normal(q, p.location, p.scale); });
    add("d_pareto", [p](double x) { return d_pareto(x, p.pareto_shape); });
    add("i_pareto", [p](double x) { return i_pareto(x, p.pareto_shape); });
    add("v_pareto", [p](double q) { return v_pareto(q, p.pareto_shape); });
    add("d_rayleigh", [p](double x) { return d_rayleigh(x, p.rayleigh_scale); });
    add("i_rayleigh", [p](double x) { return i_rayleigh(x, p.rayleigh_scale); });
    add("v_rayleigh", [p](double q) { return v_rayleigh(q, p.rayleigh_scale); });
    add("d_student", [p](double x) { return d_student(x, p.student_df); });
    add("i_student", [p](double x) { return i_student(x, p.student_df); });
    add("v_student", [p](double q) { return v_student(q, p.student_df); });
    add("d_weibull", [p](double x) { return d_weibull(x, p.weibull_scale, p.weibull_shape, p.weibull_location); });
    add("i_weibull", [p](double x) { return i_weibull(x, p.weibull_scale, p.weibull_shape, p.weibull_location); });
    add("v_weibull", [p](double q) { return v_weibull(q, p.weibull_scale, p.weibull_shape, p.weibull_location); });
}

double no_fault(double (*function)(double, double, double, short*), double x, double v, double r)
{
    short fault = 0;
    const double value = function(x, v, r, &fault);
    return fault == 0 ? value : NAN;
}

void add_discrete_and_special(Suite& suite)
{
    const auto add = [&](const std::string& name, auto function) { suite.add(name, "qmml", function); };
    const DistributionParameters p = distribution_parameters;
    add("d_binom", [p](double k) { return d_binom(k, p.binom_p, p.binom_n); });
    add("i_binom", [p](double k) { return i_binom(k, p.binom_p, p.binom_n); });
    add("d_binom_n1000", [p](double k) { return d_binom(k, p.binom_p, p.binom_large_n); });
    add("i_binom_n1000", [p](double k) { return i_binom(k, p.binom_p, p.binom_large_n); });
    add("d_geom", [p](double k) { return d_geom(k, p.geom_p); });
    add("i_geom", [p](double k) { return i_geom(k, p.geom_p); });
    add("i_geom_far", [p](double k) { return i_geom(k, p.geom_far_p); });
    add("d_poisson", [p](double k) { return d_poisson(k, p.poisson_mean); });
    add("i_poisson", [p](double k) { return i_poisson(k, p.poisson_mean); });
    add("gammln", [](double x) { return gammln(x); });
    add("gammq", [p](double x) { return gammq(p.gamma_shape, x); });
    add("betai", [p](double x) { return betai(p.beta_a, p.beta_b, x); });
    add("xftest", [p](double x) { return xftest(p.f_df1, p.f_df2, x); });
    add("prtrng_v10_r3", [p](double x) { return no_fault(prtrng, x, p.range_df, p.range_groups); });
    add("prtrng_infinite_r3", [p](double x) { return no_fault(prtrng, x, 1e9, p.range_groups); });
    add("prtrng_v60_r20", [](double x) { return no_fault(prtrng, x, 60, 20); });
    add("qtrng_middle_v10_r3", [p](double q) { return no_fault(qtrng, q, p.range_df, p.range_groups); });
    add("qtrng_v10_r3", [p](double q) { return no_fault(qtrng, q, p.range_df, p.range_groups); });
    add("qtrng_v60_r20", [](double q) { return no_fault(qtrng, q, 60, 20); });
    add("invnrm", [p](double q) { return invnrm(q, static_cast<int>(p.student_df)); });
    add("invistudent_t", [p](double q) { return invistudent_t(q, p.student_df); });
}

} // namespace

} // namespace qmml::bench

int main(int argc, char** argv)
{
    qmml::bench::Suite suite;
    qmml::bench::describe_workloads(suite);
    qmml::bench::Peer<qmml::bench::Suite&>::add_all(suite);
    qmml::bench::add_continuous(suite);
    qmml::bench::add_discrete_and_special(suite);
    return qmml::bench::run_benchmarks(argc, argv);
}
