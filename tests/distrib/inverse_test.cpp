// The searches. Reference: Boost.Math in long double, and published or closed values where a comment says so.
#include <qmml/distrib.h>

#include "distrib/incomplete_beta.h"
#include "distrib/inverse_beta.h"
#include "distrib/minimise.h"
#include "expect.h"

#include <boost/math/distributions/fisher_f.hpp>
#include <boost/math/distributions/students_t.hpp>
#include <boost/math/special_functions/beta.hpp>

#include <limits>

namespace qmml::test {

using Real = long double;
static constexpr double s_nan = std::numeric_limits<double>::quiet_NaN();

static double ln_beta(double p, double q)
{
    return static_cast<double>(std::lgamma(Real(p)) + std::lgamma(Real(q)) - std::lgamma(Real(p) + q));
}

TEST(BetaRatio, MatchesReference)
{
    for (const double p : {0.05, 0.5, 2.0, 20.0, 1000.0})
        for (const double q : {0.05, 0.5, 3.0, 30.0, 1000.0})
            for (const double x : {1e-9, 0.05, 0.3, 0.5, 0.8, 0.99}) {
                SCOPED_TRACE(testing::Message() << "p = " << p << ", q = " << q << ", x = " << x);
                int budget = 100000;
                const BetaRatio ratio = beta_ratio(x, p, q, ln_beta(p, q), 1e-15, &budget);
                ASSERT_FALSE(ratio.fault);
                EXPECT_NEAR(ratio.value, static_cast<double>(boost::math::ibeta(Real(p), Real(q), Real(x))), 2e-12);
                const double density = static_cast<double>(boost::math::ibeta_derivative(Real(p), Real(q), Real(x)));
                expect_relative(ratio.density, density, 1e-11);
            }
}

TEST(BetaRatio, FaultsAndEnds)
{
    const auto ratio = [](double x, double p, double q) {
        int budget = 1000;
        return beta_ratio(x, p, q, 0, 1e-15, &budget);
    };
    for (const double x : {0.0, 1.0}) {
        EXPECT_FALSE(ratio(x, 2, 3).fault);
        EXPECT_EQ(ratio(x, 2, 3).value, x);
    }
    EXPECT_TRUE(ratio(0.5, 0, 1).fault);
    EXPECT_TRUE(ratio(0.5, 1, -1).fault);
    EXPECT_TRUE(ratio(1.5, 1, 1).fault);
    EXPECT_TRUE(ratio(s_nan, 1, 1).fault);
    EXPECT_TRUE(ratio(0.5, 1e300, 1e300).fault); // the budget ends it
}

// The search returns the point before its last correction: the error may be the square root of its accuracy, twice.
static double search_tolerance(double area, double p)
{
    const double exponent = std::trunc(std::max(-5 / (p * p) - 1 / std::pow(area, 0.2) - 13, -305.0));
    return 2 * std::pow(10, exponent / 2);
}

TEST(InverseBeta, MatchesReference)
{
    for (const double a : {0.5, 1.0, 2.0, 5.0, 20.0, 300.0})
        for (const double b : {0.5, 1.0, 3.0, 8.0, 100.0})
            for (const double alpha : {1e-6, 0.001, 0.025, 0.3, 0.5, 0.7, 0.95, 0.999}) {
                SCOPED_TRACE(testing::Message() << "a = " << a << ", b = " << b << ", alpha = " << alpha);
                const double expected = static_cast<double>(boost::math::ibeta_inv(Real(a), Real(b), Real(alpha)));
                const double density =
                    static_cast<double>(boost::math::ibeta_derivative(Real(a), Real(b), Real(expected)));
                const double tolerance = alpha <= 0.5 ? search_tolerance(alpha, a) : search_tolerance(1 - alpha, b);
                EXPECT_NEAR(v_beta(alpha, a, b), expected, tolerance + 2e-12 / density);
                EXPECT_EQ(platform::last_error(), 0u);
            }
}

// Outputs of the published routine on which implementations agree; they differ from the true quantile in the digits
// that the stop rule leaves open.
TEST(InverseBeta, StopsWhereThePublicationDoes)
{
    static constexpr struct {
        double alpha, p, q, x;
    } s_cases[] = {
        {0.05, 2, 3, 0.09761146621883},   {0.1, 20, 5, 0.694120790746002},        {0.025, 5, 0.5, 0.590432812169877},
        {0.999, 2, 8, 0.665109489164632}, {1e-6, 0.5, 0.5, 2.46740110027029e-12},
    };
    for (const auto& c : s_cases)
        expect_relative(v_beta(c.alpha, c.p, c.q), c.x, 1e-10);
    expect_relative(v_f(0.95, 1, 10), 4.96460270428, 1e-10);
    expect_relative(v_f(0.95, 3, 20), 3.09839121140, 1e-10);
    expect_relative(v_f(0.05, 4, 7), 0.164090160718, 1e-10);
    expect_relative(invistudent_t(0.05, 10), 2.22813885260, 1e-10);
    expect_relative(invistudent_t(0.01, 5), 4.03214298369, 1e-10);
    expect_relative(invistudent_t(0.1, 1), 6.31375151488, 1e-10);
    expect_relative(invistudent_t(0.001, 30), 3.64595863455, 1e-10);
    expect_relative(invistudent_t(0.5, 2), 0.816496580928, 1e-10);
}

TEST(InverseBeta, Edges)
{
    expect_call([] { return v_beta(0, 2, 3); }, 0, LastError::cleared);
    expect_call([] { return v_beta(1, 2, 3); }, 1, LastError::cleared);
    expect_failure([] { return v_beta(-0.1, 2, 3); });
    expect_failure([] { return v_beta(1.1, 2, 3); });
    expect_failure([] { return v_beta(0.5, 0, 3); });
    expect_failure([] { return v_beta(0.5, 2, -1); });
    expect_failure([] { return v_beta(s_nan, 2, 3); });
    expect_failure([] { return v_beta(0.5, 2, s_nan); });
}

TEST(InverseF, MatchesReferenceAndEdges)
{
    for (const double df1 : {1.0, 5.0, 40.0})
        for (const double df2 : {2.0, 12.0, 60.0})
            for (const double p : {0.05, 0.5, 0.9, 0.99}) {
                const boost::math::fisher_f_distribution<Real> reference(df1, df2);
                expect_relative(v_f(p, df1, df2), static_cast<double>(quantile(reference, Real(p))), 3e-6);
            }
    expect_call([] { return v_f(0, 3, 4); }, 0, LastError::cleared);
    expect_failure([] { return v_f(1, 3, 4); });
    expect_failure([] { return v_f(-0.1, 3, 4); });
    expect_failure([] { return v_f(0.5, 0, 4); });
    expect_failure([] { return v_f(0.5, 3, 0); });
}

TEST(InverseStudent, MatchesReferenceAndEdges)
{
    for (const double df : {1.0, 2.5, 10.0, 500.0})
        for (const double p : {0.01, 0.2, 0.499, 0.6, 0.975}) {
            SCOPED_TRACE(testing::Message() << "df = " << df << ", p = " << p);
            const boost::math::students_t_distribution<Real> reference(df);
            expect_relative(v_student(p, df), static_cast<double>(quantile(reference, Real(p))), 3e-6, 3e-6);
        }
    expect_call([] { return v_student(0.5, 5); }, 0, LastError::cleared);
    for (const double p : {0.0, 1.0, -0.5, 1.5, s_nan})
        expect_failure([p] { return v_student(p, 5); });
    expect_failure([] { return v_student(0.3, 0); });
}

// A search of many terms or passes is still a search; the method's absolute error in the beta value shows here.
TEST(InverseF, AnswersForManyDegreesAndSmallShapes)
{
    for (const double df : {5000.0, 24010.0, 32000.0}) {
        const boost::math::students_t_distribution<Real> reference(df);
        for (const double p : {0.1, 0.9, 0.99})
            expect_relative(v_student(p, df), static_cast<double>(quantile(reference, Real(p))), 1e-3);
    }
    expect_relative(v_f(0.95, 1, 1e6), 3.8415, 0.02);
    expect_relative(invistudent_t(0.05, 1e6), 1.96, 1e-3);
    // x^a / (a B(a, b)) = p inverted by hand, for x as small as these.
    const double a = 0.0095, ln_beta = std::lgamma(a) + std::lgamma(0.7) - std::lgamma(a + 0.7);
    expect_relative(v_beta(0.05, a, 0.7), std::exp((std::log(0.05 * a) + ln_beta) / a), 1e-6);
}

TEST(InverseStudentTwoSided, TruncatesAndNeverFails)
{
    EXPECT_EQ(invistudent_t(0.05, 10.9), invistudent_t(0.05, 10));
    for (const double p : {0.0, 1.0, -1.0, 2.0, s_nan})
        expect_call([p] { return invistudent_t(p, 10); }, 0, LastError::kept);
    for (const double df : {0.5, 0.0, -3.0, s_nan})
        expect_call([df] { return invistudent_t(0.05, df); }, 0, LastError::kept);
}

// Outputs of the search by independent arithmetic; the true quantiles differ in the third digit.
TEST(StudentBySearch, FollowsThePathOfTheSearch)
{
    static constexpr struct {
        double p;
        int df;
        double t, truth;
    } s_cases[] = {
        {0.975, 10, 2.22938767579648, 2.22814},  {0.9, 5, 1.47808898279183, 1.47588},
        {0.3, 20, -0.534059909893798, -0.53286}, {0.75, 1000, 0.674047199167479, 0.67475},
        {0.6, 3, 0.276575906757916, 0.27667},
    };
    for (const auto& c : s_cases) {
        SCOPED_TRACE(c.p);
        expect_relative(invnrm(c.p, c.df), c.t, 1e-9);
        expect_relative(invnrm(c.p, c.df), c.truth, 0.005);
    }
}

TEST(StudentBySearch, ShortcutsAndFailures)
{
    expect_call([] { return invnrm(0, 10); }, 0, LastError::kept);
    expect_call([] { return invnrm(1, 10); }, 100000, LastError::kept);
    expect_call([] { return invnrm(0.505, 10); }, 0, LastError::kept);
    expect_call([] { return invnrm(0.495, 10); }, 0, LastError::kept);
    expect_call([] { return invnrm(0.9999999, 5); }, 0, LastError::kept); // the root is outside the interval
    EXPECT_TRUE(std::signbit(invnrm(0.9999999, 5)));
    expect_call([] { return invnrm(0.3, 0); }, 0, LastError::kept);
    EXPECT_EQ(invnrm(0.025, 10), -invnrm(1 - 0.025, 10));
}

TEST(Minimise, FindsMinima)
{
    int calls = 0;
    const auto parabola = [&calls](double t) {
        ++calls;
        return (t - 1.0 / 3) * (t - 1.0 / 3);
    };
    EXPECT_NEAR(minimise(parabola, -1, 2, 0.5, 1e-8).x, 1.0 / 3, 1e-8);
    EXPECT_EQ(calls, 6); // the start and five steps
    const Minimum kink = minimise([](double t) { return std::abs(t + 1); }, -5, 5, 0, 0.005);
    EXPECT_NEAR(kink.x, -0.999939388865352, 1e-14);
    const Minimum nothing = minimise([](double) { return s_nan; }, -5, 5, 0, 0.005);
    EXPECT_EQ(nothing.x, 0);
}

} // namespace qmml::test
