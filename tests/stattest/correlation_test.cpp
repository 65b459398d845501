#include "calls.h"

#include <boost/math/distributions/fisher_f.hpp>
#include <boost/math/distributions/students_t.hpp>
#include <gtest/gtest.h>

#include <cmath>

namespace qmml::test {
namespace {

const Doubles s_x = {1.2, 2.4, 3.1, 4.8, 5.0, 6.7, 7.3}, s_x2 = {0.5, 3.1, 1.0, 4.4, 2.2, 0.9, 5.3},
              s_y = {2.3, 1.9, 4.4, 5.1, 4.0, 7.7, 6.2};

void expect_values(const Outputs& o, const Doubles& expected, double tolerance)
{
    EXPECT_EQ(o.result, 0);
    for (std::size_t i = 0; i < expected.size(); ++i)
        EXPECT_NEAR(o.values[i], expected[i], tolerance * std::max(1.0, std::abs(expected[i]))) << i;
}

// cor.test(x, y), lm(y ~ x), lm(x ~ y)
TEST(SimpleCorrelation, MatchesR)
{
    Doubles x = s_x, y = s_y;
    x.insert(x.begin() + 2, {-9, 8, s_missing});
    y.insert(y.begin() + 2, {7, -9, 3});
    Outputs o = correlation(x, y, -9);
    EXPECT_EQ(o.code, 1); // to a marker that is a number the plain NaN is a value, and spoils the sums
    x.erase(x.begin() + 4);
    y.erase(y.begin() + 4);
    o = correlation(x, y, -9);
    expect_values(o,
                  {0.9570676905574492, 0.8164106939704214, -0.02459422903516683, 0.97063796212804343,
                   0.890190548284461980, 4.369133609928334216, 5, 0.007227943492806477, 30.5 / 7, 31.6 / 7,
                   2.2411731621758153, 2.0554225611201957, 7},
                  1e-6);
    EXPECT_EQ(o.code, 1); // success, all the same
}

// The recurrences, in extended precision and with exact differences.
TEST(SimpleCorrelation, AgreesAcrossTheCentringThreshold)
{
    for (const int n : {4999, 5000, 5001}) {
        const Doubles x = normal_sample(n, 1, 1000, 3);
        Doubles y = normal_sample(n, 2, -50, 1);
        long double mx = 0, my = 0, xx = 0, yy = 0, xy = 0;
        for (std::size_t i = 0; i < x.size(); ++i) {
            y[i] += x[i] * 0.25;
            mx += x[i] / static_cast<long double>(n);
            my += y[i] / static_cast<long double>(n);
        }
        for (std::size_t i = 0; i < x.size(); ++i) {
            xx += (x[i] - mx) * (x[i] - mx);
            yy += (y[i] - my) * (y[i] - my);
            xy += (x[i] - mx) * (y[i] - my);
        }
        const auto r = static_cast<double>(xy / std::sqrt(xx * yy));
        const Outputs o = correlation(x, y);
        EXPECT_NEAR(o.values[4], r, 1e-12);
        EXPECT_NEAR(o.values[1], static_cast<double>(xy / xx), 1e-12);
        EXPECT_NEAR(o.values[5], r / std::sqrt((1 - r * r) / (n - 2)), 1e-9);
        EXPECT_NEAR(o.values[10], static_cast<double>(std::sqrt(xx / (n - 1))), 1e-11);
    }
}

TEST(SimpleCorrelation, Rules)
{
    EXPECT_EQ(correlation({}, {}).code, 2);
    EXPECT_EQ(correlation({1, 2}, {1, s_missing}).code, 2);
    EXPECT_EQ(correlation({1, 1}, {1, 2}).code, 1);
    EXPECT_EQ(correlation({1, 2}, {3, 3}).code, 1);
    EXPECT_TRUE(correlation({1, 1}, {1, 2}).untouched());
    for (const Outputs& o : {correlation({1, 2}, {1, 5}), correlation({1, 2, 4}, {2, 4, 8})}) { // df 0; r = 1
        EXPECT_EQ(o.result, 0);
        EXPECT_EQ(o.values[4], 1);
        EXPECT_EQ(o.values[5], 0);
        EXPECT_EQ(o.values[7], 1);
    }
    // The common part of nearly equal numbers goes before anything is squared.
    EXPECT_EQ(correlation({1e9 + 0.1, 1e9 + 0.2, 1e9 + 0.3}, {1, 2, 3}).values[4], 1);
}

TEST(MultipleCorrelation, MatchesR)
{
    Doubles x1 = s_x, x2 = s_x2, y = s_y;
    for (const int gap : {0, 1, 2}) { // of each variable once
        x1.push_back(gap == 0 ? s_missing : 3);
        x2.push_back(gap == 1 ? s_missing : 4);
        y.push_back(gap == 2 ? s_missing : 5);
    }
    // m <- lm(y ~ x1 + x2); sqrt(summary(m)$r.squared); summary(m)$fstatistic
    Outputs o = correlation(x1, x2, y, 0);
    expect_values(o,
                  {1.2336185159668793, 0.9700059532239834, -0.3804891485689457, 0.9395013899869223, 15.04490181425387,
                   4, 0.01376800400393239, 30.5 / 7, 17.4 / 7, 31.6 / 7, 2.2411731621758153, 2.0554225611201957,
                   2.0554225611201957, 7},
                  1e-6);
    EXPECT_NEAR(o.values[3], 0.9395013899869223, 1e-13);
    EXPECT_EQ(o.code, 0);
    // lm(y ~ 0 + x1 + x2)
    o = correlation(x1, x2, y, 3);
    expect_values(
        o,
        {0, 1.1628033810033085, -0.3100913299041755, 0.9854239138739732, 83.88649119143182, 5, 0.0001424739403948154},
        1e-6);
}

TEST(MultipleCorrelation, Rules)
{
    EXPECT_EQ(correlation({}, {}, {}, 0).code, 2);
    EXPECT_EQ(correlation({}, {}, {}, 1).code, 2);
    EXPECT_EQ(correlation({1, 2, 3}, {1, 2, s_missing}, {1, 5, 2}, 0).code, 2);
    EXPECT_EQ(correlation({1, 1, 1}, {1, 2, 4}, {1, 5, 2}, 0).code, 1);
    EXPECT_EQ(correlation({1, 2, 4}, {1, 2, 4}, {1, 5, 2}, 0).code, 3);
    EXPECT_TRUE(correlation({1, 2, 4}, {1, 2, 4}, {1, 5, 2}, 0).untouched());
    const Outputs o = correlation({1, 2, 4}, {3, 1, 4}, {1, 5, 2}, 0); // df 0
    EXPECT_EQ(o.result, 0);
    EXPECT_EQ(o.values[4], 0);
    EXPECT_EQ(o.values[6], 1);
}

} // namespace
} // namespace qmml::test
