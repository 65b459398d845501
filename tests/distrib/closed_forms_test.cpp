// Reference: Boost.Math in long double.
#include <qmml/distrib.h>

#include "distrib/result.h"

#include <boost/math/distributions.hpp>
#include <gtest/gtest.h>

#include <cmath>
#include <limits>

namespace qmml {
namespace {

using Real = long double;
using Policy =
    boost::math::policies::policy<boost::math::policies::domain_error<boost::math::policies::ignore_error>,
                                  boost::math::policies::overflow_error<boost::math::policies::ignore_error>>;

struct Family {
    const char* name;
    double (*density)(double);
    double (*lower)(double);
    double (*quantile)(double);
    double location; // of ours against the reference
    double first, last;
};

// What the rounding of the formulas allows: an exponential multiplies the rounding of its argument, a lower tail
// written as 1 - exp(...) has the rounding of 1, a quantile that of 1 - p.
template <class Reference>
static void check(const Reference& reference, const Family& f)
{
    SCOPED_TRACE(f.name);
    const auto density = [&](Real x) { return static_cast<double>(pdf(reference, x - f.location)); };
    for (int i = 0; i <= 200; ++i) {
        const double x = f.first + (f.last - f.first) * i / 200;
        SCOPED_TRACE(testing::Message() << "x = " << x);
        const double d = density(x), p = static_cast<double>(cdf(reference, Real(x) - f.location));
        EXPECT_NEAR(f.density(x), d, (2e-15 - 3e-16 * std::log(d)) * d);
        EXPECT_NEAR(f.lower(x), p, 4e-16 + 3e-15 * p);
    }
    for (double p : {1e-12, 0.001, 0.05, 0.25, 0.4999, 0.5, 0.75, 0.9, 0.999, 1 - 0x1p-40}) {
        SCOPED_TRACE(testing::Message() << "p = " << p);
        const Real v = boost::math::quantile(reference, Real(p)) + f.location;
        EXPECT_NEAR(f.quantile(p), static_cast<double>(v), 3e-16 / density(v) + 1e-14 * std::abs(double(v)));
    }
}

TEST(ClosedForms, MatchReference)
{
    using namespace boost::math;
    check(cauchy_distribution<Real, Policy>(1, 2),
          {"cauchy", [](double x) { return d_cauchy(x, 1, 2); }, [](double x) { return i_cauchy(x, 1, 2); },
           [](double p) { return v_cauchy(p, 1, 2); }, 0, -40, 40});
    check(exponential_distribution<Real, Policy>(1.5L),
          {"exponential", [](double x) { return d_expon(x, 1.5); }, [](double x) { return i_expon(x, 1.5); },
           [](double p) { return v_expon(p, 1.5); }, 0, 0.01, 30});
    check(extreme_value_distribution<Real, Policy>(1, 2),
          {"extreme", [](double x) { return d_extreme(x, 1, 2); }, [](double x) { return i_extreme(x, 1, 2); },
           [](double p) { return v_extreme(p, 1, 2); }, 0, -6, 60});
    check(laplace_distribution<Real, Policy>(1, 2),
          {"laplace", [](double x) { return d_laplace(x, 1, 2); }, [](double x) { return i_laplace(x, 1, 2); },
           [](double p) { return v_laplace(p, 1, 2); }, 0, -60, 60});
    check(logistic_distribution<Real, Policy>(1, 2),
          {"logistic", [](double x) { return d_logis(x, 1, 2); }, [](double x) { return i_logis(x, 1, 2); },
           [](double p) { return v_logis(p, 1, 2); }, 0, -60, 60});
    check(pareto_distribution<Real, Policy>(1, 2.5L),
          {"pareto", [](double x) { return d_pareto(x, 2.5); }, [](double x) { return i_pareto(x, 2.5); },
           [](double p) { return v_pareto(p, 2.5); }, 0, 1.01, 80});
    check(rayleigh_distribution<Real, Policy>(2),
          {"rayleigh", [](double x) { return d_rayleigh(x, 2); }, [](double x) { return i_rayleigh(x, 2); },
           [](double p) { return v_rayleigh(p, 2); }, 0, 0.01, 20});
    check(weibull_distribution<Real, Policy>(1.7, 2),
          {"weibull", [](double x) { return d_weibull(x, 2, 1.7, 0.5); },
           [](double x) { return i_weibull(x, 2, 1.7, 0.5); }, [](double p) { return v_weibull(p, 2, 1.7, 0.5); }, 0.5,
           0.6, 15});
}

static constexpr unsigned s_untouched = 77;
static constexpr unsigned s_failed = distr_error_code;
static constexpr double s_infinity = std::numeric_limits<double>::infinity();

struct Case {
    const char* name;
    double (*call)();
    double expected;
    unsigned error;
};

// What the formulas alone do not say.
static const Case s_cases[] = {
    {"cauchy, scale 0", [] { return d_cauchy(0, 0, 0); }, -3.0e30, s_failed},
    {"cauchy, scale below 0", [] { return i_cauchy(0, 0, -1); }, -3.0e30, s_failed},
    {"cauchy quantile, scale 0", [] { return v_cauchy(0.5, 0, 0); }, -3.0e30, s_failed},
    {"cauchy quantile, p above 1 is 0", [] { return v_cauchy(7, 1, 2) - v_cauchy(0, 1, 2); }, 0, 0},
    {"exponential, at 0", [] { return d_expon(0, 3); }, 0, 0},
    {"exponential, lower tail at 0", [] { return i_expon(0, 3); }, 0, 0},
    {"exponential, bad rate before support", [] { return d_expon(-1, 0); }, -3.0e30, s_failed},
    {"exponential, bad rate in the lower tail", [] { return i_expon(-1, -2); }, -3.0e30, s_failed},
    {"exponential, infinite rate", [] { return d_expon(1, s_infinity); }, -3.0e30, s_failed},
    {"exponential, infinite x", [] { return d_expon(s_infinity, 1); }, 0, 0},
    {"exponential, NaN is not finite", [] { return d_expon(std::nan(""), 1); }, -3.0e30, s_failed},
    {"exponential quantile, p = 1", [] { return v_expon(1, 2); }, -3.0e30, s_failed},
    {"exponential quantile, p below 0 is 0", [] { return v_expon(-0.2, 2); }, 0, 0},
    {"exponential quantile, negative rate", [] { return v_expon(0.5, -2); }, -0.34657359027997264, 0},
    {"extreme, scale 0", [] { return d_extreme(0, 0, 0); }, -3.0e30, s_failed},
    {"extreme, lower tail, scale 0", [] { return i_extreme(0, 0, 0); }, -3.0e30, s_failed},
    {"extreme, far below is infinity times zero", [] { return d_extreme(-720, 0, 1); }, -3.0e30, s_failed},
    {"extreme, lower tail far below", [] { return i_extreme(-720, 0, 1); }, 0, 0},
    {"extreme quantile, p = 0", [] { return v_extreme(0, 0, 1); }, -3.0e30, s_failed},
    {"extreme quantile, p below 0", [] { return v_extreme(-1, 0, 1); }, -3.0e30, s_failed},
    {"extreme quantile, p = 1", [] { return v_extreme(1, 0, 1); }, s_infinity, 0},
    {"extreme quantile, the reciprocal overflows", [] { return v_extreme(1e-310, 0, 1); }, -s_infinity, 0},
    {"laplace, scale 0", [] { return d_laplace(0, 0, 0); }, -3.0e30, s_failed},
    {"laplace, lower tail, scale 0", [] { return i_laplace(0, 0, 0); }, -3.0e30, s_failed},
    {"laplace, at the location", [] { return i_laplace(3, 3, 2); }, 0.5, 0},
    {"laplace quantile, last error stays", [] { return v_laplace(0.5, 3, 2); }, 3, s_untouched},
    {"laplace quantile, scale unchecked", [] { return v_laplace(0.5, 3, 0); }, 3, s_untouched},
    {"laplace quantile, p = 0", [] { return v_laplace(0, 3, 2); }, -s_infinity, s_untouched},
    {"laplace quantile, p above 1", [] { return v_laplace(4, 3, 2); }, s_infinity, s_untouched},
    {"logistic, scale 0", [] { return d_logis(0, 0, 0); }, -3.0e30, s_failed},
    {"logistic, where exp overflows", [] { return d_logis(-800, 0, 1); }, 0, 0},
    {"logistic, lower tail where exp overflows", [] { return i_logis(-800, 0, 1); }, 0, s_untouched},
    {"logistic, lower tail, small scale", [] { return i_logis(5, 0, 0.9e-6); }, 0, s_untouched},
    {"logistic, lower tail, negative scale", [] { return i_logis(5, 0, -1); }, 0, s_untouched},
    {"logistic, lower tail, last error stays", [] { return i_logis(0, 0, 1e-6); }, 0.5, s_untouched},
    {"logistic quantile, p = 1", [] { return v_logis(1, 0, 1); }, -3.0e30, s_failed},
    {"logistic quantile, p above 1 is 0", [] { return v_logis(1.5, 0, 1); }, -s_infinity, 0},
    {"logistic quantile, scale unchecked", [] { return v_logis(0.5, 4, -1); }, 4, 0},
    {"pareto, bad shape before support", [] { return d_pareto(0.5, 0); }, -3.0e30, s_failed},
    {"pareto, lower tail, bad shape", [] { return i_pareto(2, -1); }, -3.0e30, s_failed},
    {"pareto, below 1", [] { return d_pareto(0.999, 3); }, 0, 0},
    {"pareto, at 1", [] { return d_pareto(1, 3); }, 3, 0},
    {"pareto, lower tail below 1", [] { return i_pareto(0.999, 3); }, 0, 0},
    {"pareto quantile, p = 1", [] { return v_pareto(1, 3); }, s_infinity, 0},
    {"pareto quantile, p below 0", [] { return v_pareto(-1, 3); }, 1, 0},
    {"pareto quantile, bad shape", [] { return v_pareto(0.5, 0); }, -3.0e30, s_failed},
    {"rayleigh, support before scale", [] { return d_rayleigh(0, -1); }, 0, s_untouched},
    {"rayleigh, bad scale", [] { return d_rayleigh(1, 0); }, -3.0e30, s_failed},
    {"rayleigh, lower tail, scale before support", [] { return i_rayleigh(-1, 0); }, -3.0e30, s_failed},
    {"rayleigh, lower tail at 0", [] { return i_rayleigh(0, 1); }, 0, 0},
    {"rayleigh quantile, p = 1", [] { return v_rayleigh(2, 1); }, s_infinity, 0},
    {"rayleigh quantile, p = 0", [] { return v_rayleigh(0, 1); }, 0, 0},
    {"rayleigh quantile, bad scale", [] { return v_rayleigh(0.5, -1); }, -3.0e30, s_failed},
    {"weibull, scale 1e-100", [] { return d_weibull(1, 1e-100, 2, 0); }, -3.0e30, s_failed},
    {"weibull, shape 0", [] { return i_weibull(1, 1, 0, 0); }, -3.0e30, s_failed},
    {"weibull, shape 100", [] { return d_weibull(1, 1, 100, 0); }, -3.0e30, s_failed},
    {"weibull, lower tail, shape 100", [] { return i_weibull(1, 1, 100, 0); }, -3.0e30, s_failed},
    {"weibull, just below 100", [] { return d_weibull(1, 1, 99.9, 0); }, 99.9 * 0.36787944117144233, 0},
    {"weibull, at the location", [] { return d_weibull(2, 1, 1, 2); }, 0, 0},
    {"weibull, lower tail at the location", [] { return i_weibull(2, 1, 1, 2); }, 0, 0},
    {"weibull, the power overflows", [] { return d_weibull(1e10, 1, 99, 0); }, 0, 0},
    {"weibull, lower tail, the power overflows", [] { return i_weibull(1e10, 1, 99, 0); }, 1, 0},
    {"weibull quantile, shape may exceed 100", [] { return v_weibull(0, 1, 200, 5); }, 5, 0},
    {"weibull quantile, p = 1", [] { return v_weibull(1, 1, 2, 0); }, s_infinity, 0},
    {"weibull quantile, scale 0", [] { return v_weibull(0.5, 0, 2, 0); }, -3.0e30, s_failed},
    {"weibull quantile, shape 0", [] { return v_weibull(0.5, 1, 0, 0); }, -3.0e30, s_failed},
};

TEST(ClosedForms, KeepTheirEdges)
{
    for (const Case& c : s_cases) {
        SCOPED_TRACE(c.name);
        platform::set_last_error(s_untouched);
        const double value = c.call();
        const double tolerance = std::isfinite(c.expected) ? 1e-14 * std::abs(c.expected) : 0;
        if (value != c.expected) {
            EXPECT_NEAR(value, c.expected, tolerance);
        }
        EXPECT_EQ(platform::last_error(), c.error);
    }
}

// pi is one unit in the last place too large, which turns the angle of p = 0 over the pole.
TEST(ClosedForms, CauchyQuantileAtZeroIsBeyondThePole)
{
    EXPECT_GT(v_cauchy(0, 0, 1), 1e15);
    EXPECT_LT(v_cauchy(1, 0, 1), -1e15);
}

} // namespace
} // namespace qmml
