// Binomial, geometric and Poisson. Reference: Boost.Math in long double.
#include <qmml/distrib.h>

#include "expect.h"

#include <boost/math/distributions/binomial.hpp>
#include <boost/math/distributions/geometric.hpp>
#include <boost/math/distributions/poisson.hpp>

#include <limits>

namespace qmml::test {

using Real = long double;
static constexpr double s_infinity = std::numeric_limits<double>::infinity();
static constexpr double s_nan = std::numeric_limits<double>::quiet_NaN();

TEST(Binomial, MatchesReferenceUpToSeventyTrials)
{
    for (const double p : {0.01, 0.3, 0.5, 0.97})
        for (const double n : {1.0, 2.0, 40.0, 70.0})
            for (double k = 0; k <= n; ++k) {
                SCOPED_TRACE(testing::Message() << "p = " << p << ", n = " << n << ", k = " << k);
                const boost::math::binomial_distribution<Real> reference(n, p);
                expect_relative(d_binom(k, p, n), static_cast<double>(pdf(reference, Real(k))), 1e-12);
                expect_relative(i_binom(k, p, n), static_cast<double>(cdf(reference, Real(k))), 1e-12);
            }
}

// Beyond 70 every ln j! misses up to 1 / (360 j^3), which the far terms of a sum feel most.
TEST(Binomial, StirlingUpToFiveHundredTrials)
{
    for (const double n : {71.0, 171.0, 500.0})
        for (const double k : {n * 0.25, n * 0.3, n * 0.4}) {
            const boost::math::binomial_distribution<Real> reference(n, 0.3L);
            const double j = std::floor(k), left_out = (1 / (j * j * j) + 1 / std::pow(n - j, 3)) / 360;
            expect_relative(d_binom(j, 0.3, n), static_cast<double>(pdf(reference, Real(j))), left_out + 1e-12);
            EXPECT_NEAR(i_binom(j, 0.3, n), static_cast<double>(cdf(reference, Real(j))), 2e-6);
        }
}

TEST(Binomial, ManyTrials)
{
    for (const double n : {501.0, 1000.0, 20000.0})
        for (const double p : {0.001, 0.3, 0.9})
            for (const double z : {-4.0, -1.0, 0.0, 0.5, 3.0}) {
                const double k = std::floor(n * p + z * std::sqrt(n * p * (1 - p)));
                if (k < 0)
                    continue;
                SCOPED_TRACE(testing::Message() << "p = " << p << ", n = " << n << ", k = " << k);
                const boost::math::binomial_distribution<Real> reference(n, p);
                const double lower = static_cast<double>(cdf(reference, Real(k)));
                expect_relative(d_binom(k, p, n), static_cast<double>(pdf(reference, Real(k))), 1e-12 + 3e-15 * n);
                EXPECT_NEAR(i_binom(k, p, n), lower, 2e-6 * std::min(lower, 1 - lower) + 1e-15);
            }
    // Both sides of the limit are P(X = k).
    EXPECT_NEAR(d_binom(150, 0.3, 501) / d_binom(150, 0.3, 500), 0.7 * 501 / 351, 1e-8);
    expect_call([] { return d_binom(0, 0, 600); }, 1, LastError::cleared);
    expect_call([] { return d_binom(600, 1, 600); }, 1, LastError::cleared);
    expect_call([] { return d_binom(3, 1, 600); }, 0, LastError::cleared);
}

TEST(Binomial, RoundsAndChecks)
{
    EXPECT_EQ(d_binom(2.5, 0.3, 9.5), d_binom(3, 0.3, 10));
    EXPECT_EQ(i_binom(2.49, 0.3, 10.4), i_binom(2, 0.3, 10));
    expect_call([] { return d_binom(-0.4, 0.5, 1); }, 0.5, LastError::cleared);
    expect_call([] { return d_binom(-1, 0.3, 10); }, 0, LastError::cleared);
    expect_call([] { return d_binom(11, 0.3, 10); }, 0, LastError::cleared);
    expect_call([] { return i_binom(-1, 0.3, 10); }, 0, LastError::cleared);
    expect_call([] { return i_binom(10, 0.3, 10); }, 1, LastError::cleared);
    expect_call([] { return i_binom(s_infinity, 0.3, 10); }, 1, LastError::cleared);
    expect_call([] { return d_binom(0, 0, 5); }, 1, LastError::cleared);
    expect_failure([] { return d_binom(1, 0.3, 0.7); }); // below 1 before rounding
    expect_failure([] { return d_binom(s_nan, 0.3, 5); });
    expect_failure([] { return d_binom(1, s_nan, 5); });
    expect_failure([] { return i_binom(1, 0.3, s_nan); });
    expect_failure([] { return i_binom(5e14, 0.5, 1e15); }); // the incomplete beta fails
    EXPECT_LE(i_binom(69, 0.3, 70), 1);
}

TEST(Geometric, MatchesReference)
{
    for (const double p : {0.002, 0.2, 0.9})
        for (double k = 0; k <= 1900; k = k * 1.5 + 1) {
            const double whole = std::floor(k);
            SCOPED_TRACE(testing::Message() << "p = " << p << ", k = " << whole);
            const boost::math::geometric_distribution<Real> reference(p);
            expect_relative(d_geom(whole, p), static_cast<double>(pdf(reference, Real(whole))), 1e-12, 1e-300);
            expect_relative(i_geom(whole, p), static_cast<double>(cdf(reference, Real(whole))), 1e-13);
        }
}

TEST(Geometric, SumsAtMostTwoThousandTerms)
{
    const double all = 1 - std::pow(1 - 0.0003, 2001);
    for (const double k : {2000.0, 5000.0, 3e9, 1e300, s_infinity})
        EXPECT_NEAR(i_geom(k, 0.0003), all, 1e-13);
    EXPECT_LT(i_geom(1999, 0.0003), all - 1e-5);
    expect_call([] { return d_geom(1e10, 0.5); }, 0, LastError::cleared);
}

TEST(Geometric, Edges)
{
    expect_call([] { return d_geom(-1, 0.3); }, 0, LastError::cleared);
    expect_call([] { return i_geom(-1, 0.3); }, 0, LastError::cleared);
    expect_call([] { return d_geom(0.4, 0.3); }, 0.3, LastError::cleared);
    expect_call([] { return i_geom(0, 0.3); }, 0.3, LastError::cleared);
    expect_call([] { return i_geom(7, 1); }, 1, LastError::cleared);
    expect_call([] { return i_geom(7, 0); }, 0, LastError::cleared);
    expect_failure([] { return d_geom(-1, -0.1); });
    expect_failure([] { return i_geom(1, 1.1); });
    EXPECT_TRUE(std::isnan(d_geom(s_nan, 0.3)));
    EXPECT_TRUE(std::isnan(i_geom(3, s_nan)));
}

TEST(Poisson, MatchesReference)
{
    for (const double lambda : {0.1, 1.0, 8.0, 100.0})
        for (double k = 0; k < 3 * lambda + 10; ++k) {
            SCOPED_TRACE(testing::Message() << "lambda = " << lambda << ", k = " << k);
            const boost::math::poisson_distribution<Real> reference(lambda);
            expect_relative(d_poisson(k, lambda), static_cast<double>(pdf(reference, Real(k))), 2e-12);
            const double lower = static_cast<double>(cdf(reference, Real(k)));
            const double upper = static_cast<double>(cdf(complement(reference, Real(k))));
            EXPECT_NEAR(i_poisson(k, lambda), lower, 2e-5 * std::min(lower, upper) + 1e-12 * lower + 1e-15);
        }
}

TEST(Poisson, Edges)
{
    expect_call([] { return d_poisson(-1, 2); }, 0, LastError::cleared);
    expect_call([] { return d_poisson(-0.5, 2); }, 0, LastError::cleared); // rounds to -1
    expect_call([] { return i_poisson(-1, 2); }, 0, LastError::cleared);
    EXPECT_EQ(d_poisson(2.5, 2), d_poisson(3, 2));
    EXPECT_NEAR(d_poisson(0, 2), std::exp(-2), 1e-16);
    expect_failure([] { return d_poisson(-1, 0); });
    expect_failure([] { return i_poisson(3, -1); });
    expect_failure([] { return i_poisson(1e6, 1e6); }); // too many terms for the series
    expect_failure([] { return i_poisson(s_nan, 2); });
    EXPECT_TRUE(std::isnan(d_poisson(s_nan, 2)));
}

} // namespace qmml::test
