// Beta, F and Student t. Reference: Boost.Math in long double.
#include <qmml/distrib.h>

#include "expect.h"

#include <boost/math/distributions/beta.hpp>
#include <boost/math/distributions/fisher_f.hpp>
#include <boost/math/distributions/students_t.hpp>

#include <limits>

namespace qmml::test {

using Real = long double;
static constexpr double s_infinity = std::numeric_limits<double>::infinity();
static constexpr double s_nan = std::numeric_limits<double>::quiet_NaN();

// The incomplete beta stops at 1e-6 of its value per step.
template <class Reference>
static void expect_lower(double value, const Reference& reference, double x)
{
    const double lower = static_cast<double>(cdf(reference, Real(x)));
    const double upper = static_cast<double>(cdf(complement(reference, Real(x))));
    EXPECT_NEAR(value, lower, 2e-6 * std::min(lower, upper) + 1e-15);
}

TEST(Beta, MatchesReference)
{
    for (const double a : {0.3, 1.0, 2.5, 40.0})
        for (const double b : {0.5, 1.0, 6.0, 300.0})
            for (int i = 1; i < 30; ++i) {
                const double x = i / 30.0;
                SCOPED_TRACE(testing::Message() << "a = " << a << ", b = " << b << ", x = " << x);
                const boost::math::beta_distribution<Real> reference(a, b);
                expect_relative(d_beta(x, a, b), static_cast<double>(pdf(reference, Real(x))), 3e-12);
                expect_lower(i_beta(x, a, b), reference, x);
                EXPECT_EQ(platform::last_error(), 0u);
            }
}

TEST(Beta, Edges)
{
    for (const double x : {-1.0, 0.0, 1.0, 2.0})
        expect_call([=] { return d_beta(x, 2, 3); }, 0, LastError::cleared);
    expect_failure([] { return d_beta(2, 0, 3); });
    expect_failure([] { return d_beta(0.5, 2, -3); });
    expect_failure([] { return d_beta(s_nan, 2, 3); });
    expect_failure([] { return d_beta(5e-324, 0.01, 1); }); // not finite
    expect_call([] { return i_beta(9.9e-7, 0.01, 1); }, 0, LastError::cleared);
    expect_call([] { return i_beta(1, 2, 3); }, 1, LastError::cleared);
    expect_failure([] { return i_beta(s_nan, 2, 3); });
}

TEST(F, MatchesReference)
{
    for (const double df1 : {1.0, 3.0, 12.0, 150.0})
        for (const double df2 : {1.0, 4.0, 25.0, 1000.0})
            for (double x = 0.01; x < 50; x *= 1.4) {
                SCOPED_TRACE(testing::Message() << "df1 = " << df1 << ", df2 = " << df2 << ", x = " << x);
                const boost::math::fisher_f_distribution<Real> reference(df1, df2);
                expect_relative(d_f(x, df1, df2), static_cast<double>(pdf(reference, Real(x))), 1e-11);
                EXPECT_EQ(platform::last_error(), 0u);
                expect_lower(i_f(x, df1, df2), reference, x);
                EXPECT_EQ(platform::last_error(), 0u);
            }
}

TEST(F, Edges)
{
    expect_call([] { return d_f(0, 3, 4); }, 0, LastError::cleared);
    expect_call([] { return i_f(-1, 3, 4); }, 0, LastError::cleared);
    expect_call([] { return i_f(s_infinity, 3, 4); }, 1, LastError::cleared);
    expect_call([] { return i_f(1, 0.5, 0.5) > 0; }, 1, LastError::cleared); // d_f asks for a whole degree
    expect_failure([] { return d_f(-1, 0.5, 3); });
    expect_failure([] { return i_f(-1, 0.009, 3); });
    expect_failure([] { return i_f(1, 1e14, 1e14); }); // the fraction under it fails
    expect_failure([] { return i_f(s_nan, 3, 4); });
}

TEST(Student, MatchesReference)
{
    for (const double df : {1.0, 2.5, 9.0, 100.0, 300.0})
        for (double t = -8; t <= 8; t += 0.5) {
            SCOPED_TRACE(testing::Message() << "df = " << df << ", t = " << t);
            const boost::math::students_t_distribution<Real> reference(df);
            expect_relative(d_student(t, df), static_cast<double>(pdf(reference, Real(t))), 3e-12);
            EXPECT_EQ(platform::last_error(), 0u);
            expect_lower(i_student(t, df), reference, t);
            EXPECT_EQ(platform::last_error(), 0u);
        }
}

TEST(Student, SwitchesToTheNormalDistribution)
{
    for (const double t : {-2.0, 0.0, 0.7}) {
        EXPECT_NE(d_student(t, 300), d_normal(t, 0, 1));
        expect_call([=] { return d_student(t, 300.5); }, d_normal(t, 0, 1), LastError::cleared);
        expect_call([=] { return i_student(t, 32000); }, i_normal(t, 0, 1), LastError::cleared);
    }
    EXPECT_NE(i_student(0.7, 31999), i_normal(0.7, 0, 1));
    EXPECT_EQ(v_student(0.7, 32001), v_normal(0.7, 0, 1));
    EXPECT_NE(v_student(0.7, 32000), v_normal(0.7, 0, 1));
}

TEST(Student, Edges)
{
    expect_call([] { return d_student(1, 0.9); }, 0, LastError::kept);
    expect_call([] { return i_student(0, 3); }, 0.5, LastError::cleared);
    expect_call([] { return i_student(s_infinity, 3); }, 1, LastError::cleared);
    expect_call([] { return i_student(-s_infinity, 3); }, 0, LastError::cleared);
    expect_failure([] { return i_student(1, 0.009); });
    expect_failure([] { return i_student(s_nan, 3); });
    EXPECT_TRUE(std::isnan(d_student(s_nan, 3)));
}

} // namespace qmml::test
