// Reference: Boost.Math in long double.
#include <qmml/distrib.h>

#include "distrib/log_gamma.h"
#include "distrib/log_pair.h"
#include "distrib/rounding.h"
#include "expect.h"

#include <boost/math/special_functions/beta.hpp>
#include <boost/math/special_functions/binomial.hpp>
#include <boost/math/special_functions/gamma.hpp>

#include <limits>

namespace qmml::test {

using Real = long double;
static constexpr double s_nan = std::numeric_limits<double>::quiet_NaN();

TEST(LogPair, HasTheBitsOfTheSingleLogarithm)
{
    for (double x = 1e-320; x < 1e300; x *= 137.3)
        for (const double y : {0.3, 1.0, 1 + x, 0.0, 5e-324, std::numeric_limits<double>::infinity()}) {
            const LogPair pair = log_pair(x, y);
            EXPECT_EQ(pair.first, elementary::log(x));
            EXPECT_EQ(pair.second, elementary::log(y));
        }
    EXPECT_TRUE(std::isnan(log_pair(1, s_nan).second));
    EXPECT_TRUE(std::isnan(log_pair(-1, 1).first));
}

// The leading coefficient is 2.9e-13 off the best one.
TEST(Gammln, MatchesReference)
{
    for (double x = 1e-6; x < 1e8; x *= 1.07) {
        SCOPED_TRACE(x);
        const double expected = static_cast<double>(boost::math::lgamma(Real(x)));
        expect_relative(gammln(x), expected, 3e-15, 8e-13 + 1e-15 / x);
    }
    EXPECT_NEAR(gammln(1), 0, 5e-13);
    EXPECT_NEAR(gammln(2), 0, 5e-13);
}

TEST(Gammln, FailsWithoutAPositiveArgument)
{
    expect_call([] { return gammln(3.5) > 1; }, 1, LastError::cleared);
    for (const double x : {0.0, -1.0, -1e300, -std::numeric_limits<double>::infinity()})
        expect_failure([x] { return gammln(x); });
    EXPECT_TRUE(std::isnan(gammln(s_nan)));
}

TEST(Gammln, TheTableHasTheBitsOfTheFunction)
{
    for (int n = 1; n < 1100; ++n)
        EXPECT_EQ(ln_gamma_tabulated(n), gammln(n)) << n;
    EXPECT_EQ(ln_gamma_tabulated(7.5), gammln(7.5));
}

TEST(IncompleteGamma, MatchesReference)
{
    for (const double a : {0.05, 0.5, 1.0, 3.5, 20.0, 100.0, 1000.0})
        for (int i = 1; i <= 60; ++i) {
            const double x = a * i / 20;
            SCOPED_TRACE(testing::Message() << "a = " << a << ", x = " << x);
            const double q = static_cast<double>(boost::math::gamma_q(Real(a), Real(x))), p = 1 - q;
            // The series and the fraction stop at 1e-6 of their value per step.
            expect_call([&] { return std::abs(gammq(a, x) - q) <= 2e-5 * std::min(p, q) + 1e-11 * q + 1e-15; }, 1,
                        LastError::cleared);
            double ratio = 0, gln = 0;
            if (x < a + 1) {
                EXPECT_EQ(gser(&ratio, a, x, &gln), 0);
                EXPECT_EQ(1 - ratio, gammq(a, x));
            } else {
                EXPECT_EQ(gcf(&ratio, a, x, &gln), 0);
                EXPECT_EQ(ratio, gammq(a, x));
            }
            EXPECT_EQ(gln, gammln(a));
        }
    EXPECT_NEAR(gammq(1, 2), std::exp(-2), 1e-7);
}

// Outside the part of the plane where Q is small the recurrence is scaled in every step.
TEST(IncompleteGamma, TheFractionWorksBelowItsUsualRange)
{
    for (const double x : {2.5, 3.4, 4.4}) {
        double ratio = 0;
        EXPECT_EQ(gcf(&ratio, 3.5, x, nullptr), 0);
        expect_relative(ratio, static_cast<double>(boost::math::gamma_q(Real(3.5), Real(x))), 2e-5);
    }
}

TEST(IncompleteGamma, Failures)
{
    expect_failure([] { return gammq(1, 0); });
    expect_failure([] { return gammq(1, -1); });
    expect_failure([] { return gammq(0, 1); });
    expect_failure([] { return gammq(-2, 1); });
    expect_failure([] { return gammq(1e6, 1e6 - 10); }); // 300 terms do not suffice
    expect_failure([] { return gammq(s_nan, 1); });

    double ratio = 5, gln = 0;
    EXPECT_EQ(gser(&ratio, 2.5, -1, &gln), 1);
    EXPECT_EQ(gln, gammln(2.5));
    EXPECT_EQ(gser(&ratio, 2.5, 0, &gln), 1);
    EXPECT_EQ(gcf(&ratio, 1e6, 1e6 + 1, &gln), 1);
    EXPECT_EQ(ratio, 5);
    EXPECT_EQ(gser(nullptr, 2.5, 1, nullptr), 0);
}

TEST(IncompleteBeta, MatchesReference)
{
    for (const double a : {0.1, 0.5, 1.0, 4.0, 30.0, 500.0})
        for (const double b : {0.2, 0.5, 2.5, 60.0, 500.0})
            for (int i = 1; i < 40; ++i) {
                const double x = i / 40.0;
                SCOPED_TRACE(testing::Message() << "a = " << a << ", b = " << b << ", x = " << x);
                const double lower = static_cast<double>(boost::math::ibeta(Real(a), Real(b), Real(x)));
                const double upper = static_cast<double>(boost::math::ibetac(Real(a), Real(b), Real(x)));
                EXPECT_NEAR(betai(a, b, x), lower, 2e-6 * std::min(lower, upper) + 1e-15);
                EXPECT_EQ(platform::last_error(), 0u);
            }
}

// The fraction is scaled step by step where its coefficients are large: the same function.
TEST(IncompleteBeta, TheFractionWorksOutsideItsUsualRange)
{
    for (const double x : {0.2, 0.25}) {
        const double weight =
            std::pow(x, 2) * std::pow(1 - x, 30) / static_cast<double>(boost::math::beta(2.0L, 30.0L));
        expect_relative(weight * betacf(2, 30, x) / 2, static_cast<double>(boost::math::ibeta(2.0L, 30.0L, Real(x))),
                        2e-5);
    }
}

TEST(IncompleteBeta, EdgesAndFailures)
{
    expect_call([] { return betai(2, 3, 0); }, 0, LastError::cleared);
    expect_call([] { return betai(2, 3, 1); }, 1, LastError::cleared);
    expect_failure([] { return betai(2, 3, 1.5); });
    expect_failure([] { return betai(2, 3, -0.1); });
    expect_failure([] { return betai(2, 3, s_nan); });
    expect_failure([] { return betacf(1e12, 1e12, 0.5); }); // 5000 steps do not suffice
    expect_call([] { return betacf(2, 3, 0); }, 1, LastError::cleared);
    // Parameters are not checked, and the error of their log-gamma does not survive.
    expect_call([] { return betai(-1.5, 2, 0.25) != distr_error_value; }, 1, LastError::cleared);
}

TEST(BinomialCoefficient, MatchesReference)
{
    for (const int n : {1, 2, 5, 35, 69, 70})
        for (int k = 0; k <= n; ++k)
            expect_relative(fctral(n, k), boost::math::binomial_coefficient<double>(unsigned(n), unsigned(k)), 5e-13);
    // Stirling's formula with one correction term: what is left out of ln j! lies between 0 and 1 / (360 j^3).
    const auto left_out = [](int j) { return j < 2 ? 0 : 1 / (360.0 * j * j * j); };
    for (const int n : {71, 170, 171, 500})
        for (int k = 0; k <= n; k += 1 + n / 50) {
            const Real expected = boost::math::binomial_coefficient<Real>(unsigned(n), unsigned(k));
            expect_relative(fctral(n, k), static_cast<double>(expected), left_out(k) + left_out(n - k) + 1e-12);
        }
}

TEST(BinomialCoefficient, ChecksNothing)
{
    expect_call([] { return fctral(500, 0); }, 1, LastError::kept);
    expect_relative(fctral(5, 7), 1.0 / 42, 1e-13); // n! / k!
    expect_relative(fctral(3, -2), 6.0 / 120, 1e-13);
    EXPECT_EQ(fctral(70, -2000000000), 0);
    expect_relative(fctral(-4, -9), 1.0 / 120, 1e-14);
    EXPECT_TRUE(std::isnan(fctral(71, -1)));
}

TEST(XfTest, IsTheUpperTailOfF)
{
    for (double f = 0.1; f < 20; f *= 1.5) {
        const Real x = 12.0L / (12.0L + 5.0L * Real(f));
        const double upper = static_cast<double>(boost::math::ibeta(6.0L, 2.5L, x));
        EXPECT_NEAR(xftest(5, 12, f), upper, 2e-6 * std::min(upper, 1 - upper));
    }
    expect_call([] { return xftest(0.005, 10, 2); }, 1, LastError::kept);
    expect_call([] { return xftest(10, 0.005, 2); }, 1, LastError::kept);
    expect_call([] { return xftest(5, 10, 0); }, 1, LastError::kept);
    expect_call([] { return xftest(5, 10, std::numeric_limits<double>::infinity()); }, 0, LastError::cleared);
    expect_failure([] { return xftest(5, 10, s_nan); });
}

TEST(Rounding, HalvesGoAwayFromZero)
{
    EXPECT_EQ(round_half_away(2.5), 3);
    EXPECT_EQ(round_half_away(-2.5), -3);
    EXPECT_EQ(round_half_away(2.4), 2);
    EXPECT_TRUE(std::signbit(round_half_away(-0.4)));
    EXPECT_EQ(round_half_away(-0.4), 0);
    EXPECT_FALSE(std::signbit(round_half_away(-0.0)));
    EXPECT_TRUE(std::isnan(round_half_away(s_nan)));
}

} // namespace qmml::test
