#include "matrix/moments.h"

#include "core/break_check.h"
#include "core/memory.h"
#include "core/missing.h"
#include "matrix/rounded_difference.h"
#include "platform/levels.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstddef>
#include <cstdlib>
#include <limits>
#include <random>
#include <string>
#include <vector>

namespace {

using namespace qmml;
using namespace qmml::matrix;

constexpr double s_infinity = std::numeric_limits<double>::infinity();

void expect_same_bits(const std::vector<double>& actual, const std::vector<double>& expected)
{
    ASSERT_EQ(actual.size(), expected.size());
    for (std::size_t i = 0; i < actual.size(); ++i)
        if (bits_of(actual[i]) != bits_of(expected[i]) && !(is_nan(actual[i]) && is_nan(expected[i]))) {
            ADD_FAILURE() << "element " << i << ": " << actual[i] << " instead of " << expected[i];
            return;
        }
}

template <class Body>
void at_every_level(Body body)
{
    for (const auto level : platform::supported_levels()) {
        SCOPED_TRACE(static_cast<int>(level));
        const platform::ForcedLevel forced(level);
        body();
    }
}

double power_of_ten(int exponent)
{
    return std::strtod(("1e" + std::to_string(exponent)).c_str(), nullptr);
}

// With the exponent found by trial, in the opposite direction below one.
int plain_exponent(double value)
{
    int e = 0;
    if (value == 0)
        return 0;
    while (std::fabs(value) >= power_of_ten(e + 1))
        ++e;
    while (std::fabs(value) <= power_of_ten(e - 1) && e > -323)
        --e;
    return e;
}

double plain_difference(double x, double y)
{
    const double d = x - y;
    if (!is_finite(x) || !is_finite(y))
        return d;
    const int of_x = plain_exponent(x), of_y = plain_exponent(y);
    const double scale = power_of_ten((of_x > of_y ? of_x : of_y) - 15);
    if (of_x - of_y > 1 || of_y - of_x > 1 || scale == 0)
        return d;
    const double whole = std::floor(d / scale);
    return (d / scale - whole >= 0.5 ? std::ceil(d / scale) : whole) * scale;
}

TEST(RoundedDifference, KeepsFifteenDigitsOfOperandsOfOneSize)
{
    struct Case {
        double x, y, expected;
    };
    const Case cases[] = {
        {0.3, 0.1, 0.2}, // 0.19999999999999998 otherwise
        {1.1, 1, 0.1},   // 0.10000000000000009
        {1, 1.1, -0.1},
        {1e9 + 3, 1e9 + 1, 2},
        {1000, 10, 990},
        {1.1, 0.01, 1.1 - 0.01},           // 0.01 is two digits shorter: unchanged
        {1.1, 0.010000000000000002, 1.09}, // just above it, one
        {1000.1, 10.1, 1000.1 - 10.1},     // the same above one
        {999.1, 10.1, 989},
        {1e15, 5e-16, 1e15},
        {0.7 + 0.1, 0, 0.8}, // zero counts as of the size of one
        {2e-320, 1e-320, 2e-320 - 1e-320},
        {s_infinity, 1, s_infinity},
        {1, s_infinity, -s_infinity},
    };
    for (const auto& c : cases)
        EXPECT_EQ(rounded_difference(c.x, c.y), c.expected) << c.x << " - " << c.y;
    EXPECT_TRUE(is_nan(rounded_difference(s_missing, 1)));
    EXPECT_TRUE(is_nan(rounded_difference(s_infinity, s_infinity)));
}

TEST(RoundedDifference, HasTheSameBitsForAnArrayAtEveryLevel)
{
    std::mt19937 engine(1);
    std::vector<double> values = {0.0,    -0.0,     1,       0.1,      0.01,       0.5,         1e-300,    5e-324,
                                  3e-309, 2.3e-308, 1.7e308, -1.7e308, s_infinity, -s_infinity, s_missing, 3e30};
    for (int e = -3; e < 5; ++e)
        for (const double near : {power_of_ten(e), -2.5 * power_of_ten(e)}) {
            values.insert(values.end(), {std::nextafter(near, 0), near, std::nextafter(near, 2 * near)});
            values.push_back(near * (1 + static_cast<double>(engine()) * 0x1p-32));
        }
    for (const double y : values) {
        std::vector<double> expected;
        for (const double x : values) {
            expected.push_back(plain_difference(x, y));
            expect_same_bits({rounded_difference(x, y)}, {expected.back()});
        }
        at_every_level([&] {
            SCOPED_TRACE(y);
            std::vector<double> actual = values;
            rounded_differences(actual.data(), static_cast<std::ptrdiff_t>(actual.size()), y, actual.data());
            expect_same_bits(actual, expected);
        });
    }
}

struct Data {
    int r, c;
    std::vector<double> values;

    double operator()(int i, int j) const
    {
        return values[static_cast<std::size_t>(j) * static_cast<std::size_t>(r) + static_cast<std::size_t>(i)];
    }
};

// All moments, case by case and variable by variable.
struct PlainMoments {
    explicit PlainMoments(const Data& data)
        : c(static_cast<std::size_t>(data.c)), means(c), minima(c), running(c), sums(c), products(c * c), raw(c * c)
    {
        const bool shifted = data.r <= 1000;
        for (std::size_t j = 0; shifted && j < c; ++j) {
            minima[j] = 3e30;
            for (int i = 0; i < data.r; ++i)
                if (data(i, static_cast<int>(j)) < minima[j])
                    minima[j] = data(i, static_cast<int>(j));
        }
        for (int t = 0; t < data.r; ++t) {
            std::vector<double> before(c), after(c);
            for (std::size_t i = 0; i < c; ++i) {
                const double given = data(t, static_cast<int>(i)),
                             x = shifted ? plain_difference(given, minima[i]) : given;
                means[i] += (given - means[i]) / (t + 1.0);
                before[i] = x - running[i];
                running[i] += before[i] / (t + 1.0);
                after[i] = x - running[i];
                sums[i] += after[i] * before[i];
                for (std::size_t j = 0; j <= i; ++j) {
                    products[i * c + j] = products[j * c + i] += after[j] * before[i];
                    raw[i * c + j] = raw[j * c + i] += given * data(t, static_cast<int>(j));
                }
            }
        }
    }

    std::vector<double> correlations(bool centred, double n) const
    {
        std::vector<double> result(c * c, 1.0);
        for (std::size_t i = 0; i < c; ++i)
            for (std::size_t j = 0; j < i; ++j) {
                const double p = products[i * c + j], m = running[i] + minima[i], k = running[j] + minima[j];
                result[i * c + j] = result[j * c + i] =
                    centred ? p / std::sqrt(sums[i] * sums[j])
                            : (p / n + m * k) / std::sqrt((m * m + sums[i] / n) * (sums[j] / n + k * k));
            }
        return result;
    }

    std::size_t c;
    std::vector<double> means, minima, running, sums, products, raw;
};

TEST(Moments, HaveTheBitsOfThePlainRecurrencesAtEveryLevel)
{
    struct Shape {
        int r, c;
    };
    std::vector<Shape> shapes = {{33, 70}, {64, 24}, {5, 25}, {1025, 65}};
    for (const int r : {0, 1, 2, 100, 1000, 1001})
        for (const int c : {1, 2, 7, 8, 9, 20, 50})
            shapes.push_back({r, c});
    for (const auto& shape : shapes)
        for (const bool spoiled : {false, true}) {
            SCOPED_TRACE(testing::Message() << shape.r << " x " << shape.c << (spoiled ? ", spoiled" : ""));
            Data data{shape.r, shape.c, {}};
            std::mt19937 engine(2);
            for (int i = 0; i < shape.r * shape.c; ++i)
                data.values.push_back((i % 3 == 0 ? 100 : 1) * (static_cast<double>(engine() % 2000) / 100 - 3));
            for (std::size_t i = 0; spoiled && i < data.values.size(); i += 701)
                data.values[i] = i % 3 == 0 ? s_missing : i % 3 == 1 ? s_infinity : -s_infinity;
            const PlainMoments plain(data);
            at_every_level([&] {
                std::vector<double> row(plain.c), square(plain.c * plain.c);
                EXPECT_EQ(column_means(data.values.data(), shape.r, shape.c, row.data()), Status::success);
                expect_same_bits(row, plain.means);
                EXPECT_EQ(sums_of_squared_deviations(data.values.data(), shape.r, shape.c, row.data()),
                          Status::success);
                expect_same_bits(row, plain.sums);
                for (const bool centred : {true, false}) {
                    EXPECT_EQ(cross_products(data.values.data(), shape.r, shape.c, square.data(), centred),
                              Status::success);
                    expect_same_bits(square, centred ? plain.products : plain.raw);
                    int failed = -1;
                    if (shape.r > 1 || shape.c == 1) {
                        EXPECT_EQ(correlations(data.values.data(), shape.r, shape.c, square.data(), centred, failed),
                                  Status::success);
                        expect_same_bits(square, plain.correlations(centred, shape.r));
                    }
                }
            });
        }
}

TEST(Moments, LoseALargeCommonPartBeforeSquaring)
{
    const double data[] = {1e9 + 1, 1e9 + 2, 1e9 + 3};
    double sum = 0;
    EXPECT_EQ(sums_of_squared_deviations(data, 3, 1, &sum), Status::success);
    EXPECT_EQ(sum, 2);
}

TEST(Correlations, NameTheHigherColumnOfTheFirstPairWithoutVariance)
{
    struct Case {
        const char* name;
        int r, constant, other, expected;
    };
    for (const auto& c : {Case{"first", 4, 0, 0, 1}, Case{"second", 4, 1, 1, 1}, Case{"later", 4, 3, 2, 2},
                          Case{"last", 2000, 4, 4, 4}, Case{"no cases", 0, 0, 0, 1}}) {
        SCOPED_TRACE(c.name);
        std::vector<double> data;
        for (int j = 0; j < 5; ++j)
            for (int i = 0; i < c.r; ++i)
                data.push_back(j == c.constant || j == c.other ? 7.25 : i % (j + 2));
        for (const bool centred : {true, false}) {
            std::vector<double> result(25);
            int failed = -1;
            EXPECT_EQ(correlations(data.data(), c.r, 5, result.data(), centred, failed), Status::no_variance);
            EXPECT_EQ(failed, c.expected);
        }
    }
}

TEST(Moments, ReportTheWantOfMemoryStopWhenAskedAndTakeEmptyData)
{
    constexpr int r = 100, c = 40;
    const std::vector<double> data(std::size_t{r} * c, 1.5);
    std::vector<double> result(std::size_t{c} * c);
    int failed = 0;
    const auto correlate = [&] { return correlations(data.data(), r, c, result.data(), true, failed); };
    for (const long n : {1, 2}) {
        fail_allocation(n);
        EXPECT_EQ(correlate(), Status::out_of_memory);
        fail_allocation(n);
        EXPECT_EQ(cross_products(data.data(), r, c, result.data(), true), Status::out_of_memory);
    }
    fail_allocation(0);
    const auto stop = [](auto call) {
        request_break(1);
        EXPECT_EQ(call(), Status::stopped);
        request_break(0);
    };
    stop(correlate);
    stop([&] { return column_means(data.data(), r, c, result.data()); });
    stop([&] { return sums_of_squared_deviations(data.data(), r, c, result.data()); });
    for (const int count : {0, -1}) {
        EXPECT_EQ(column_means(nullptr, 3, count, nullptr), Status::success);
        EXPECT_EQ(cross_products(nullptr, 3, count, nullptr, false), Status::success);
        EXPECT_EQ(correlations(nullptr, 3, count, nullptr, true, failed), Status::success);
    }
}

} // namespace
