// Boost.Math, as it comes ("boost") and without its detour through long double ("boost_double").
#include "distrib_bench.h"

#include <boost/math/distributions.hpp>
#include <boost/math/special_functions/beta.hpp>
#include <boost/math/special_functions/gamma.hpp>

namespace qmml::bench {
namespace {

namespace bm = boost::math;

template <class Policy>
class BoostPeer {
public:
    BoostPeer(Suite& suite, const char* name) : m_suite(suite), m_name(name) {}

    void add_all() const
    {
        const DistributionParameters p = distribution_parameters;
        continuous("beta", bm::beta_distribution<double, Policy>(p.beta_a, p.beta_b));
        continuous("cauchy", bm::cauchy_distribution<double, Policy>(p.location, p.scale));
        continuous("chi2", bm::chi_squared_distribution<double, Policy>(p.chi2_df));
        continuous("expon", bm::exponential_distribution<double, Policy>(p.expon_rate));
        continuous("extreme", bm::extreme_value_distribution<double, Policy>(p.location, p.scale));
        continuous("f", bm::fisher_f_distribution<double, Policy>(p.f_df1, p.f_df2));
        continuous("gamma", bm::gamma_distribution<double, Policy>(p.gamma_shape));
        continuous("laplace", bm::laplace_distribution<double, Policy>(p.location, p.scale));
        continuous("logis", bm::logistic_distribution<double, Policy>(p.location, p.scale));
        continuous("lognorm", bm::lognormal_distribution<double, Policy>(p.lognorm_mu, p.lognorm_sigma));
        continuous("normal", bm::normal_distribution<double, Policy>(p.location, p.scale));
        continuous("pareto", bm::pareto_distribution<double, Policy>(1.0, p.pareto_shape));
        continuous("rayleigh", bm::rayleigh_distribution<double, Policy>(p.rayleigh_scale));
        continuous("student", bm::students_t_distribution<double, Policy>(p.student_df));
        continuous("weibull", bm::weibull_distribution<double, Policy>(p.weibull_shape, p.weibull_scale),
                   p.weibull_location);
        discrete("binom", bm::binomial_distribution<double, Policy>(p.binom_n, p.binom_p));
        discrete("binom_n1000", bm::binomial_distribution<double, Policy>(p.binom_large_n, p.binom_p));
        discrete("geom", bm::geometric_distribution<double, Policy>(p.geom_p));
        discrete("poisson", bm::poisson_distribution<double, Policy>(p.poisson_mean));
        const bm::geometric_distribution<double, Policy> far(p.geom_far_p);
        add("i_geom_far", [far](double k) { return cdf(far, k); });

        add("gammln", [](double x) { return bm::lgamma(x, Policy()); });
        add("gammq", [p](double x) { return bm::gamma_q(p.gamma_shape, x, Policy()); });
        add("betai", [p](double x) { return bm::ibeta(p.beta_a, p.beta_b, x, Policy()); });
        const bm::fisher_f_distribution<double, Policy> f(p.f_df1, p.f_df2);
        add("xftest", [f](double x) { return cdf(complement(f, x)); });
        const bm::students_t_distribution<double, Policy> t(p.student_df);
        add("invnrm", [t](double q) { return quantile(t, q); });
        add("invistudent_t", [t](double q) { return quantile(complement(t, q / 2)); });
    }

private:
    template <class Function>
    void add(const std::string& workload, Function function) const
    {
        m_suite.add(workload, m_name, function);
    }

    template <class Distribution>
    void discrete(const std::string& name, const Distribution& distribution) const
    {
        add("d_" + name, [distribution](double k) { return pdf(distribution, k); });
        add("i_" + name, [distribution](double k) { return cdf(distribution, k); });
    }

    template <class Distribution>
    void continuous(const std::string& name, const Distribution& distribution) const
    {
        discrete(name, distribution);
        add("v_" + name, [distribution](double q) { return quantile(distribution, q); });
    }

    template <class Distribution>
    void continuous(const std::string& name, const Distribution& distribution, double location) const
    {
        add("d_" + name, [=](double x) { return pdf(distribution, x - location); });
        add("i_" + name, [=](double x) { return cdf(distribution, x - location); });
        add("v_" + name, [=](double q) { return quantile(distribution, q) + location; });
    }

    Suite& m_suite;
    const char* m_name;
};

void add_boost(Suite& suite)
{
    using namespace bm::policies;
    BoostPeer<policy<>>(suite, "boost").add_all();
    BoostPeer<policy<promote_double<false>>>(suite, "boost_double").add_all();
}

const Peer<Suite&> s_boost(add_boost);

} // namespace
} // namespace qmml::bench
