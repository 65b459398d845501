// Reference: Boost.Math in long double, and the published formulas as they are printed.
#include <qmml/distrib.h>

#include "distrib/inverse_normal.h"
#include "distrib/normal.h"
#include "distrib/result.h"

#include <boost/math/distributions/lognormal.hpp>
#include <boost/math/distributions/normal.hpp>
#include <gtest/gtest.h>

#include <bit>
#include <cmath>
#include <limits>

namespace qmml {
namespace {

static constexpr double s_infinity = std::numeric_limits<double>::infinity();

static std::uint64_t bits(double v)
{
    return std::bit_cast<std::uint64_t>(v);
}

// AS 66 level by level.
static long double published_tail(long double z)
{
    const long double y = z * z / 2;
    if (z <= static_cast<long double>(1.28))
        return 0.5L - z * (0.398942280444L -
                           0.399903438504L * y /
                               (y + 5.75885480458L -
                                29.8213557808L / (y + 2.62433121679L + 48.6959930692L / (y + 5.92885724438L))));
    return 0.398942280385L * std::exp(-y) /
           (z - 3.8052e-8L +
            1.00000615302L /
                (z + 0.000398064794L +
                 1.98615381364L / (z - 0.151679116635L +
                                   5.29330324926L / (z + 4.8385912808L -
                                                     15.1508972451L / (z + 0.742380924027L +
                                                                       30.789933034L / (z + 3.99019417011L))))));
}

TEST(NormalTail, IsThePublishedFraction)
{
    for (int i = 0; i <= 7600; ++i) {
        const double z = i / 400.0;
        SCOPED_TRACE(testing::Message() << "z = " << z);
        const auto tail = static_cast<double>(published_tail(z));
        // exp multiplies the rounding of its argument
        const double tolerance = (1e-14 + z * z * 1.2e-16) * tail;
        EXPECT_NEAR(i_normal(-z, 0, 1), z > 18.66 ? 0 : tail, tolerance);
        EXPECT_NEAR(i_normal(z, 0, 1), z > 7 ? 1 : 1 - tail, 2e-16 + tolerance);
    }
}

TEST(NormalTail, IsAccurate)
{
    const boost::math::normal_distribution<long double> reference;
    for (int i = -1866; i <= 700; ++i) {
        const double z = i / 100.0;
        SCOPED_TRACE(testing::Message() << "z = " << z);
        const auto p = static_cast<double>(cdf(reference, static_cast<long double>(z)));
        EXPECT_NEAR(i_normal(z, 0, 1), p, std::min(5e-12, 5e-11 * p));
    }
}

TEST(NormalTail, LanesAndTheScalarPathAgreeInEveryBit)
{
    const auto agree = [](double z) {
        EXPECT_EQ(bits(normal_lower_lane<ScalarLane>(z)), bits(normal_lower(z))) << "z = " << z;
        EXPECT_EQ(bits(normal_density_lane<ScalarLane>(z)), bits(normal_density(z))) << "z = " << z;
    };
    for (int i = -40000; i <= 40000; ++i)
        agree(i * 0.00097);
    for (double z : {0.0, -0.0, 1.28, std::nextafter(1.28, 2), -1.28, 7.0, std::nextafter(7.0, 8), -7.0, -18.66,
                     std::nextafter(-18.66, -19), 1e300, -1e300, s_infinity, -s_infinity, 5e-324, -5e-324})
        agree(z);
    EXPECT_TRUE(std::isnan(normal_lower_lane<ScalarLane>(std::nan(""))));
    EXPECT_TRUE(std::isnan(normal_lower(std::nan(""))));
}

TEST(NormalTail, IsCutWhereDocumented)
{
    EXPECT_EQ(i_normal(0, 0, 1), 0.5);
    EXPECT_EQ(i_normal(8, 0, 1), 1.0);
    EXPECT_LT(i_normal(7, 0, 1), 1.0);
    EXPECT_GT(i_normal(-18.66, 0, 1), 0.0);
    EXPECT_EQ(i_normal(-18.67, 0, 1), 0.0);
    EXPECT_NEAR(i_normal(-8, 0, 1), 6.22096057447083e-16, 1e-28);
    EXPECT_EQ(alnorm(1.96, 0), i_normal(1.96, 0, 1));
    EXPECT_EQ(alnorm(1.96, 1), 1 - i_normal(1.96, 0, 1));
}

TEST(NormalQuantile, MatchesReference)
{
    const boost::math::normal_distribution<long double> reference;
    for (int i = 1; i < 2000; ++i) {
        const double p = i / 2000.0;
        const auto z = static_cast<double>(quantile(reference, static_cast<long double>(p)));
        EXPECT_NEAR(v_normal(p, 0, 1), z, 2e-15 * std::abs(z)) << "p = " << p;
    }
    for (double p = 0.5; p > 1e-307; p *= 0.3) {
        const auto z = static_cast<double>(quantile(reference, static_cast<long double>(p)));
        EXPECT_NEAR(v_normal(p, 0, 1), z, 2e-15 * std::abs(z)) << "p = " << p;
    }
    EXPECT_NEAR(v_normal(0x1p-1074, 0, 1), -38.467405617144346, 1e-12);
    EXPECT_NEAR(v_normal(1 - 1e-10, 0, 1), 6.36134088969742, 1e-13);
}

struct Case {
    const char* name;
    double (*call)();
    double expected;
    unsigned error;
};

static constexpr unsigned s_untouched = 77;

static const Case s_cases[] = {
    {"lower tail, sigma 0", [] { return i_normal(1, 0, 0); }, -3.0e30, distr_error_code},
    {"lower tail, sigma below 0", [] { return i_normal(1, 0, -1); }, -3.0e30, distr_error_code},
    {"lower tail, infinite x", [] { return i_normal(-s_infinity, 0, 1); }, 0, 0},
    {"density never touches the last error", [] { return d_normal(0, 0, 1); }, 0.39894228040143267794, s_untouched},
    {"density, negative sigma", [] { return d_normal(0, 0, -1); }, -0.39894228040143267794, s_untouched},
    {"density, sigma 0", [] { return d_normal(0, 1, 0); }, s_infinity * 0, s_untouched},
    {"quantile, p = 0", [] { return v_normal(0, 0, 1); }, -3.0e30, distr_error_code},
    {"quantile, p below 0", [] { return v_normal(-0.5, 0, 1); }, -3.0e30, distr_error_code},
    {"quantile, p above 1", [] { return v_normal(1.5, 0, 1); }, -3.0e30, distr_error_code},
    {"quantile of one half", [] { return v_normal(0.5, 3, 2); }, 3, 0},
    {"quantile, sigma unchecked", [] { return v_normal(0.5, 3, -2); }, 3, 0},
    {"log-normal, sigma 0", [] { return d_lognorm(1, 0, 0); }, 0, 0},
    {"log-normal, x = 0", [] { return d_lognorm(0, 0, 1); }, 0, 0},
    {"log-normal, lower tail below 1e-6", [] { return i_lognorm(0.99e-6, -50, 1); }, 0, 0},
    {"log-normal, lower tail, sigma 0", [] { return i_lognorm(3, 0, 0); }, 1, 0},
    {"log-normal quantile of one half", [] { return v_lognorm(0.5, 0, 1); }, 1, 0},
    {"log-normal quantile, p = 0", [] { return v_lognorm(0, 0, 1); }, 0, distr_error_code},
    {"log-normal quantile, p = 1", [] { return v_lognorm(1, 0, 1); }, 0, distr_error_code},
    {"log-normal quantile, p = 0, sigma 0", [] { return v_lognorm(0, 0, 0); }, 1, distr_error_code},
};

TEST(Normal, KeepsItsEdges)
{
    for (const Case& c : s_cases) {
        SCOPED_TRACE(c.name);
        platform::set_last_error(s_untouched);
        const double value = c.call();
        if (std::isnan(c.expected))
            EXPECT_TRUE(std::isnan(value));
        else
            EXPECT_DOUBLE_EQ(value, c.expected);
        EXPECT_EQ(platform::last_error(), c.error);
    }
}

TEST(Normal, AndLognormalMatchReference)
{
    const boost::math::normal_distribution<long double> normal(1, 2);
    const boost::math::lognormal_distribution<long double> lognormal(0.5L, 0.75L);
    for (int i = 1; i <= 400; ++i) {
        const double x = i * 0.05;
        SCOPED_TRACE(testing::Message() << "x = " << x);
        const auto close = [](double value, long double expected, double tolerance) {
            EXPECT_NEAR(value, static_cast<double>(expected), tolerance * static_cast<double>(expected));
        };
        close(d_normal(x, 1, 2), pdf(normal, static_cast<long double>(x)), 2e-14);
        close(d_lognorm(x, 0.5, 0.75), pdf(lognormal, static_cast<long double>(x)), 4e-15);
        close(i_lognorm(x, 0.5, 0.75), cdf(lognormal, static_cast<long double>(x)), 5e-11);
        const double p = i / 401.0;
        close(v_lognorm(p, 0.5, 0.75), quantile(lognormal, static_cast<long double>(p)), 4e-15);
    }
}

} // namespace
} // namespace qmml
