#include "core/memory.h"
#include "core/missing.h"
#include "platform/levels.h"

#include <qmml/core.h>
#include <qmml/descstat.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <random>
#include <vector>

namespace {

constexpr double s_nan = qmml::s_missing;

class Percentiles : public testing::Test {
protected:
    void SetUp() override { QMMLSetLastError(77); }
    void TearDown() override
    {
        Func_SetPercentileMethod(0);
        qmml::fail_allocation(0);
    }
};

TEST_F(Percentiles, FollowTheSixDefinitions)
{
    struct Case {
        int n; // the values 1 to n
        double p, expected[6];
    };
    static constexpr Case s_cases[] = {
        {4, 50, {2, 2, 2, 2.5, 2.5, 2.5}},        {10, 25, {2.5, 3, 3, 2.75, 3, 3.25}},
        {10, 75, {7.5, 8, 8, 8.25, 8, 7.75}},     {1, 50, {1, 1, 1, 1, 1, 1}},
        {2, 99.99, {1.9998, 2, 2, 2, 2, 1.9999}}, {2, 0.01, {1, 1, 1, 1, 1, 1.0001}},
    };
    for (const auto& c : s_cases)
        for (short method = 1; method <= 6; ++method)
            for (const int sort_first : {0, 1}) {
                SCOPED_TRACE(testing::Message() << "n " << c.n << " p " << c.p << " method " << method);
                std::vector<double> values(static_cast<std::size_t>(c.n));
                for (int i = 0; i < c.n; ++i)
                    values[static_cast<std::size_t>(i)] = sort_first ? c.n - i : i + 1;
                double result = -1;
                short status = -1;
                EXPECT_EQ(ComputePercentilesEx(values.data(), c.n, &result, method, c.p, &status, sort_first), 0);
                EXPECT_EQ(status, 0);
                const double expected = c.expected[method - 1];
                EXPECT_NEAR(result, expected, 1e-12) << "literal arithmetic rounds";
            }
}

TEST_F(Percentiles, RejectBadArgumentsWithoutWriting)
{
    struct Case {
        int n, method;
        double p;
        int status;
    };
    static constexpr Case s_cases[] = {
        {0, 3, 50, 1},     {-1, 3, 50, 1},   {3, 0, 50, 1},   {3, 7, 50, 1},    {3, 3, 0.009, 1},
        {3, 3, 99.991, 1}, {3, 3, s_nan, 1}, {3, 3, 0.01, 0}, {3, 3, 99.99, 0},
    };
    const double values[] = {1, 2, 3};
    for (const auto& c : s_cases) {
        SCOPED_TRACE(testing::Message() << c.n << " " << c.method << " " << c.p);
        double result = -1;
        short status = -1;
        EXPECT_EQ(ComputePercentilesEx(values, c.n, &result, static_cast<short>(c.method), c.p, &status, 1), c.status);
        EXPECT_EQ(status, c.status);
        EXPECT_EQ(result == -1, c.status != 0);
    }
    EXPECT_EQ(QMMLGetLastError(), 77);
}

TEST_F(Percentiles, CountWhatIsMissingAsHighestWhereTheyDoNotSkipIt)
{
    const double values[] = {s_nan, 2, 1, s_nan};
    double result = 0;
    short status = 0;
    ComputePercentilesEx(values, 4, &result, 3, 50, &status, 1);
    EXPECT_EQ(result, 2);
    ComputePercentilesEx(values, 4, &result, 3, 75, &status, 1);
    EXPECT_TRUE(std::isnan(result));
}

// Short columns on the stack, middle ones through a copy, long ones through a sample.
TEST_F(Percentiles, AreThoseOfTheSortedValuesAtEveryLength)
{
    std::mt19937_64 generator(3);
    std::normal_distribution<double> normal;
    const auto patterns = {0, 1, 2, 3};
    for (const int n : {1, 2, 9, 2048, 2049, 16384, 100000, 500001})
        for (const int pattern : patterns) {
            std::vector<double> values(static_cast<std::size_t>(n));
            for (int i = 0; i < n; ++i) {
                const double x[] = {normal(generator), std::floor(3 * normal(generator)), double(i),
                                    // Tells a sample taken at even distances nothing.
                                    i % 64 == 32 ? 1e6 : normal(generator)};
                values[static_cast<std::size_t>(i)] = generator() % 50 == 0 ? s_nan : x[pattern];
            }
            std::vector<double> sorted;
            std::copy_if(values.begin(), values.end(), std::back_inserter(sorted),
                         [](double v) { return !std::isnan(v); });
            std::sort(sorted.begin(), sorted.end());
            for (short method = 1; method <= 6; ++method)
                for (const double p : {0.01, 25.0, 50.0, 98.7}) {
                    SCOPED_TRACE(testing::Message()
                                 << "n " << n << " pattern " << pattern << " method " << method << " p " << p);
                    Func_SetPercentileMethod(method);
                    const auto present = static_cast<int>(sorted.size());
                    double expected = 0, result = 0;
                    short status = 0;
                    if (present > 0) {
                        ASSERT_EQ(ComputePercentilesEx(sorted.data(), present, &expected, method, p, &status, 0), 0);
                    }
                    for (const auto level : qmml::platform::supported_levels()) {
                        const qmml::platform::ForcedLevel forced(level);
                        ASSERT_EQ(ValPercentile(values.data(), 1, n, p, &result), present);
                        if (present > 0) {
                            ASSERT_EQ(result, expected);
                        }
                    }
                    if (p == 25.0 && present > 1) {
                        double quartiles[3], median = 0;
                        ASSERT_EQ(QelValQuartiles(values.data(), 1, n, quartiles), present);
                        ASSERT_EQ(ValMedian(values.data(), 1, n, &median), present);
                        EXPECT_EQ(quartiles[0], expected);
                        EXPECT_EQ(quartiles[1], median);
                    }
                }
        }
}

TEST_F(Percentiles, ReportFailuresThroughTheLastError)
{
    const std::vector<double> values(5000, 1.5);
    double result[3] = {};
    EXPECT_EQ(ValPercentile(values.data(), 1, 5000, 0.005, result), 0);
    EXPECT_TRUE(std::isnan(result[0]));
    EXPECT_EQ(QMMLGetLastError(), 12663);

    EXPECT_EQ(Func_SetPercentileMethod(9), 9);
    EXPECT_EQ(ValMean(values.data(), 1, 5000, result), 5000) << "no percentile, no method";
    EXPECT_EQ(ValQuartiles(values.data(), 1, 1, result), 1) << "one value leaves no choice";
    EXPECT_EQ(result[2], 1.5);
    EXPECT_EQ(ValQuartiles(values.data(), 1, 2, result), 0);
    for (const double quartile : result)
        EXPECT_TRUE(std::isnan(quartile));
    Func_SetPercentileMethod(3);

    QMMLSetLastError(77);
    EXPECT_EQ(ValMedian(values.data(), 1, 5000, result), 5000);
    EXPECT_EQ(QMMLGetLastError(), 77);
    for (const auto call : {ValMedian, ValQuartiles, ValMode}) {
        QMMLSetLastError(77);
        qmml::fail_allocation(1);
        EXPECT_EQ(call(values.data(), 1, 5000, result), 0);
        EXPECT_TRUE(std::isnan(result[0]));
        EXPECT_EQ(QMMLGetLastError(), 12558);
    }
    short status = 0;
    qmml::fail_allocation(1);
    EXPECT_EQ(ComputePercentilesEx(values.data(), 5000, result, 3, 50, &status, 1), 1);
    EXPECT_EQ(status, 2);
}

} // namespace
