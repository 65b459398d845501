// Chi-square, gamma and Poisson. Reference: Boost.Math in long double.
#include <qmml/distrib.h>

#include "expect.h"

#include <boost/math/distributions/chi_squared.hpp>
#include <boost/math/distributions/gamma.hpp>

#include <limits>

namespace qmml::test {

using Real = long double;
using Gamma_ = boost::math::gamma_distribution<Real>;
static constexpr double s_infinity = std::numeric_limits<double>::infinity();
static constexpr double s_nan = std::numeric_limits<double>::quiet_NaN();

TEST(GammaFamily, DensitiesAndTailsMatchReference)
{
    for (const double shape : {0.01, 0.3, 0.5, 1.0, 1.5, 7.0, 41.0, 300.0, 1000.0})
        for (int i = 1; i <= 60; ++i) {
            const double x = shape * i / 20;
            SCOPED_TRACE(testing::Message() << "shape = " << shape << ", x = " << x);
            const Gamma_ reference(shape);
            const double density = static_cast<double>(pdf(reference, Real(x)));
            const double lower = static_cast<double>(cdf(reference, Real(x)));
            const double rounding = 1e-12 + 1e-14 * shape;
            expect_relative(d_gamma(x, shape), density, rounding);
            expect_relative(d_chi2(2 * x, 2 * shape), density / 2, rounding);
            EXPECT_EQ(platform::last_error(), 0u);
            // Below the floor of the exponent the value is 0.
            EXPECT_NEAR(i_gamma(x, shape), lower, std::min(lower, 1 - lower) * rounding + 3e-16 + 7e-39);
            EXPECT_EQ(i_chi2(2 * x, 2 * shape), i_gamma(x, shape));
        }
}

// Closed forms: P(1, x) = 1 - exp(-x), P(1/2, x) = erf(sqrt x).
TEST(GammaFamily, TailsMatchClosedForms)
{
    for (double x = 1e-5; x < 40; x *= 1.7) {
        EXPECT_NEAR(i_gamma(x, 1), -std::expm1(-x), 5e-13);
        EXPECT_NEAR(i_gamma(x, 0.5), std::erf(std::sqrt(x)), 5e-13);
    }
}

TEST(GammaFamily, NormalApproximationAboveShapeThousand)
{
    EXPECT_NEAR(i_gamma(1100, 1050), 0.936923093421970, 4e-6);
    EXPECT_GT(std::abs(i_gamma(1100, 1050) - 0.936923093421970), 1e-7); // an approximation it is
    EXPECT_NEAR(i_gamma(900, 1000), 5.49902265711783e-4, 1e-14);        // and not yet here
}

TEST(GammaFamily, EdgesOfTheTails)
{
    EXPECT_EQ(i_gamma(1e-3, 100), 0); // exponent below -88
    EXPECT_EQ(i_gamma(200, 2), 1);
    EXPECT_EQ(i_gamma(2e8, 2), 1);
    EXPECT_EQ(i_gamma(s_infinity, 2), 1);
    EXPECT_TRUE(std::isnan(i_gamma(s_nan, 2)));
    for (const double shape : {2.0, 0.0, -1.0, 2000.0})
        expect_call([=] { return i_gamma(-1, shape); }, 0, LastError::kept);
    expect_call([] { return i_gamma(1, 0); }, 0, LastError::kept);
    expect_call([] { return i_chi2(-1, 3); }, 0, LastError::cleared);
    expect_failure([] { return i_chi2(-1, 0.009); });
    expect_failure([] { return i_chi2(s_nan, 3); });
}

TEST(GammaFamily, EdgesOfTheDensities)
{
    expect_call([] { return d_chi2(0, 1); }, 0, LastError::cleared);
    expect_call([] { return d_gamma(0, 0.5); }, 0, LastError::cleared);
    expect_failure([] { return d_gamma(-1, 0); });
    expect_failure([] { return d_gamma(s_infinity, 3); }); // not finite
    expect_failure([] { return d_gamma(s_nan, 3); });
    expect_failure([] { return d_chi2(1, s_nan); });
}

TEST(GammaFamily, QuantilesMatchReference)
{
    for (const double df : {0.1, 0.3, 0.32, 0.5, 1.0, 2.0, 5.0, 30.0, 100.0, 700.0, 2000.0})
        for (const double p : {0.000002, 1e-4, 0.001, 0.05, 0.25, 0.5, 0.75, 0.9, 0.99, 0.999998}) {
            SCOPED_TRACE(testing::Message() << "df = " << df << ", p = " << p);
            const boost::math::chi_squared_distribution<Real> reference(df);
            const Real x = quantile(reference, Real(p));
            // The tail is good to about 2e-13 of its value, 1e-15 of one; the steps end within 5e-11.
            const double slack = (1e-15 + 1e-14 * (1 + df / 100) * p) / static_cast<double>(pdf(reference, x));
            expect_relative(v_chi2(p, df), static_cast<double>(x), 6e-11, 100 * slack);
            EXPECT_EQ(platform::last_error(), 0u);
            EXPECT_EQ(v_gamma(p, df / 2), v_chi2(p, df) / 2);
        }
}

TEST(GammaFamily, QuantileFailures)
{
    expect_failure([] { return v_chi2(0.0000019, 3); });
    expect_failure([] { return v_chi2(0.9999981, 3); });
    expect_failure([] { return v_chi2(0.5, 0.009); });
    expect_failure([] { return v_chi2(s_nan, 3); });
    expect_failure([] { return v_gamma(0.5, 0.004); });
    expect_failure([] { return v_gamma(0.5, 0); });
    expect_failure([] { return v_gamma(1.1, 1); });
}

} // namespace qmml::test
