#include "core/missing.h"
#include "platform/float_guard.h"
#include "platform/levels.h"

#include <qmml/core.h>
#include <qmml/descstat.h>

#include <gtest/gtest.h>

#include <boost/multiprecision/cpp_bin_float.hpp>
#include <cfenv>
#include <cmath>
#include <limits>
#include <random>
#include <vector>

namespace {

using Real = boost::multiprecision::cpp_bin_float_50;
using Statistic = int (*)(const double*, int, int, double*);

constexpr double s_nan = qmml::s_missing, s_inf = std::numeric_limits<double>::infinity();

struct Named {
    const char* name;
    Statistic function, twin;
};
constexpr Named s_statistics[] = {
    {"sum", ValSum, QelValSum},
    {"mean", ValMean, QelValMean},
    {"variance", ValVariance, QelValVariance},
    {"standard deviation", ValStDeviation, QelValStDeviation},
    {"standard error", ValStError, QelValStError},
    {"minimum", ValMin, QelValMin},
    {"maximum", ValMax, QelValMax},
    {"median", ValMedian, QelValMedian},
    {"mode", ValMode, QelValMode},
};

double value_of(Statistic statistic, const std::vector<double>& values)
{
    double result = -1;
    statistic(values.data(), 1, static_cast<int>(values.size()), &result);
    return result;
}

TEST(Values, MatchHandComputedStatistics)
{
    const double values[] = {99, 4, s_nan, 1, 1, 2, 2, s_nan, 99};
    const double expected[] = {10, 2, 1.5, std::sqrt(1.5), std::sqrt(0.3), 1, 4, 2, 1};
    for (std::size_t i = 0; i < std::size(s_statistics); ++i) {
        SCOPED_TRACE(s_statistics[i].name);
        for (const auto call : {s_statistics[i].function, s_statistics[i].twin}) {
            double result = -1;
            EXPECT_EQ(call(values, 2, 7, &result), 5);
            EXPECT_NEAR(result, expected[i], 1e-15);
        }
    }
    EXPECT_EQ(ValCount(values, 2, 7), 5);
    EXPECT_EQ(QelValCount(values, -3, 2), 2) << "a start below 1 is 1";
}

TEST(Values, AreMissingWithoutValues)
{
    const double nothing[] = {s_nan, -s_nan};
    QMMLSetLastError(77);
    for (const auto& statistic : s_statistics) {
        SCOPED_TRACE(statistic.name);
        for (const int count : {2, -2}) {
            double result = 0;
            EXPECT_EQ(statistic.function(nothing, 1, count, &result), 0);
            EXPECT_TRUE(std::isnan(result));
        }
        double result = 0;
        EXPECT_EQ(statistic.function(nullptr, 1, 0, &result), 0);
    }
    double quartiles[3] = {};
    EXPECT_EQ(ValQuartiles(nothing, 1, 2, quartiles), 0);
    EXPECT_TRUE(std::isnan(quartiles[0]) && std::isnan(quartiles[1]) && std::isnan(quartiles[2]));
    EXPECT_EQ(QMMLGetLastError(), 77);
}

TEST(Values, StopAtTheLastPositionThereIs)
{
    // Position 2147483647 and the one before it; no others are read.
    const std::vector<double> end = {3, 4};
    const double* const start_of_all = reinterpret_cast<const double*>(reinterpret_cast<std::uintptr_t>(end.data()) -
                                                                       sizeof(double) * std::uintptr_t{2147483645});
    for (const int count : {-1, 0, 2, 5})
        EXPECT_EQ(ValCount(start_of_all, 2147483646, count), 2);
}

// Lengths on both sides of the change from the recurrences to blocks.
TEST(Values, HaveAccurateMomentsAtEveryLength)
{
    std::mt19937_64 generator(5);
    std::normal_distribution<double> normal(1000, 1);
    for (const int n : {1, 2, 511, 512, 513, 523, 1000, 1024, 4096, 100003}) {
        SCOPED_TRACE(n);
        std::vector<double> values(static_cast<std::size_t>(n));
        Real sum = 0, squares = 0;
        int present = 0;
        for (double& v : values) {
            v = generator() % 50 == 0 && n > 2 ? s_nan : normal(generator);
            if (!std::isnan(v)) {
                sum += v;
                ++present;
            }
        }
        const Real mean = sum / present;
        for (const double v : values)
            if (!std::isnan(v))
                squares += (v - mean) * (v - mean);
        const auto variance = static_cast<double>(present > 1 ? Real(squares / (present - 1)) : squares);
        // n roundings of numbers near 1000, and of their deviations near 1 from a mean that is that much off.
        const double relative = 1e-16 * std::min(n, 512) + 1e-15;
        for (const auto level : qmml::platform::supported_levels()) {
            const qmml::platform::ForcedLevel forced(level);
            EXPECT_NEAR(value_of(ValSum, values), static_cast<double>(sum), relative * static_cast<double>(sum));
            EXPECT_NEAR(value_of(ValMean, values), static_cast<double>(mean), relative * 1000);
            EXPECT_NEAR(value_of(ValVariance, values), variance, 1e-13 * 1000 * variance);
            int count = 0;
            double curve_mean = 0, sd = 0;
            GetNormalCurveStats(values.data(), n, &count, &curve_mean, &sd);
            EXPECT_EQ(count, present);
            EXPECT_NEAR(curve_mean, static_cast<double>(mean), relative * 1000);
            EXPECT_NEAR(sd, std::sqrt(variance), 1e-13 * 1000 * std::sqrt(variance));
        }
    }
}

TEST(Values, AreTheSameBitsAtEveryLevel)
{
    std::mt19937_64 generator(6);
    for (const int n : {513, 1000, 70001}) {
        std::vector<double> values(static_cast<std::size_t>(n));
        for (double& v : values)
            v = generator() % 60 == 0
                    ? s_nan
                    : std::ldexp(static_cast<double>(generator()), static_cast<int>(generator() % 40));
        for (const auto& statistic : s_statistics) {
            const double best = value_of(statistic.function, values);
            for (const auto level : qmml::platform::supported_levels()) {
                const qmml::platform::ForcedLevel forced(level);
                EXPECT_EQ(qmml::bits_of(value_of(statistic.function, values)), qmml::bits_of(best)) << statistic.name;
            }
        }
    }
}

TEST(Values, OfAConstantColumnDoNotVary)
{
    for (const int n : {1, 2, 100, 513, 5000})
        for (const double c : {0.1, -1e300, 5e-324}) {
            const std::vector<double> values(static_cast<std::size_t>(n), c);
            EXPECT_EQ(value_of(ValMean, values), c);
            if (std::abs(c) < 1 || n == 1) { // the recurrence squares the first value
                EXPECT_EQ(value_of(ValVariance, values), 0);
                EXPECT_EQ(value_of(ValStDeviation, values), 0);
            }
        }
}

TEST(Values, GiveInfinitiesTheirPlace)
{
    for (const int n : {3, 2000}) {
        std::vector<double> values(static_cast<std::size_t>(n), 1.0);
        values[1] = s_inf;
        EXPECT_EQ(value_of(ValSum, values), s_inf);
        EXPECT_EQ(value_of(ValMax, values), s_inf);
        EXPECT_EQ(value_of(ValMin, values), 1);
        EXPECT_FALSE(std::isfinite(value_of(ValMean, values)));
        EXPECT_FALSE(std::isfinite(value_of(ValVariance, values)));
        const std::vector<double> only(static_cast<std::size_t>(n), -s_inf);
        EXPECT_EQ(value_of(ValMax, only), -s_inf);
    }
    std::vector<double> cancelling(2000, 1e308); // column by column this overflows
    for (std::size_t i = 1; i < cancelling.size(); i += 2)
        cancelling[i] = -1e308;
    EXPECT_EQ(value_of(ValSum, cancelling), 0);
}

TEST(Values, FindExtremesWhereverTheyStand)
{
    for (const auto level : qmml::platform::supported_levels()) {
        const qmml::platform::ForcedLevel forced(level);
        for (const int n : {1, 5, 8, 19, 70})
            for (int place = 0; place < n; ++place) {
                std::vector<double> values(static_cast<std::size_t>(n), s_nan);
                values[static_cast<std::size_t>(n - 1 - place)] = 0.5;
                for (const double x : {-2.0, 3.0}) {
                    values[static_cast<std::size_t>(place)] = x;
                    const double other = place == n - 1 - place ? x : 0.5;
                    ASSERT_EQ(value_of(ValMin, values), std::min(x, other));
                    ASSERT_EQ(value_of(ValMax, values), std::max(x, other));
                }
            }
        for (const double zero : {0.0, -0.0}) { // only what is strictly smaller replaces the first one
            EXPECT_EQ(std::signbit(value_of(ValMin, {s_nan, 1, zero, -zero})), std::signbit(zero));
            EXPECT_EQ(std::signbit(value_of(ValMax, {-1, zero, s_nan, -zero})), std::signbit(zero));
        }
    }
}

TEST(Values, LoseThoseUpToTheThreshold)
{
    double values[] = {1, 2, s_nan, 3, -s_inf};
    CleanForThreshold(5, values, 2);
    EXPECT_TRUE(std::isnan(values[0]) && std::isnan(values[1]) && std::isnan(values[2]) && std::isnan(values[4]));
    EXPECT_EQ(values[3], 3);
    CleanForThreshold(5, values, s_nan);
    EXPECT_EQ(values[3], 3);
    CleanForThreshold(0, nullptr, 1);
}

TEST(NormalCurve, HasNoSpreadOfOneValueAndNothingOfNone)
{
    int count = -1;
    double mean = 0, sd = -1;
    const double values[] = {7, s_nan};
    GetNormalCurveStats(values, 2, &count, &mean, &sd);
    EXPECT_EQ(count, 1);
    EXPECT_EQ(mean, 7);
    EXPECT_EQ(sd, 0);
    GetNormalCurveStats(nullptr, 0, &count, &mean, &sd);
    EXPECT_EQ(count, 0);
    EXPECT_TRUE(std::isnan(mean) && std::isnan(sd));
}

TEST(Values, NeverTrap)
{
    // A signalling NaN, overflow, infinities that cancel, inexact sums.
    std::vector<double> values = {
        std::numeric_limits<double>::signaling_NaN(), 1e308, s_inf, -s_inf, 0.1, 5e-324, 1e308};
    values.resize(3000, 1.1);
    const int n = static_cast<int>(values.size());
    std::fenv_t before;
    std::fegetenv(&before);
    feenableexcept(FE_ALL_EXCEPT);
    const unsigned unmasked = qmml::platform::read_unit();
    for (const int count : {7, n})
        for (const auto& statistic : s_statistics) {
            double result = 0;
            statistic.function(values.data(), 1, count, &result);
            double percentile = 0;
            ValPercentile(values.data(), 1, count, values[0], &percentile);
        }
    double quartiles[3], mean = 0, sd = 0;
    int count = 0;
    short status = 0;
    ValQuartiles(values.data(), 1, n, quartiles);
    GetNormalCurveStats(values.data(), n, &count, &mean, &sd);
    ComputePercentilesEx(values.data(), n, quartiles, 4, values[0], &status, 1);
    ComputePercentilesEx(values.data(), n, quartiles, 4, 50, &status, 0);
    CleanForThreshold(n, values.data(), values[0]);
    auto keys = values;
    DualSort(keys.data(), values.data(), n, 1);
    QelVectorSort(values.data(), 0, n);
    QelVectorRank(values.data(), 1, 2, n);
    const unsigned after = qmml::platform::read_unit();
    std::fesetenv(&before);
    EXPECT_EQ(after, unmasked);
}

} // namespace
