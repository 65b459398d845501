#include "calls.h"

#include <boost/math/distributions/chi_squared.hpp>
#include <boost/math/distributions/fisher_f.hpp>
#include <gtest/gtest.h>

#include <cmath>
#include <numeric>

namespace qmml::test {
namespace {

void expect_relative(double value, long double expected, double tolerance)
{
    EXPECT_NEAR(value, static_cast<double>(expected), tolerance * std::abs(static_cast<double>(expected)));
}

TEST(OneWayAnova, MatchesR) // anova(lm(y ~ g)), and the same of abs(y - ave(y, g))
{
    const Outputs o = anova({6.9, 5.4,  5.8, 4.6, 4.0, 8.3, 6.8, 7.8, 9.2,       s_missing, 6.5,
                             8.0, 10.5, 8.1, 6.9, 9.3, 5.8, 3.8, 6.1, s_missing, 5.6,       6.2},
                            {5, 6, 5, 0, 6}, 1);
    ASSERT_EQ(o.result, 0);
    EXPECT_EQ(o.code, 0);
    expect_relative(o.values[0], 9.723839939883518L, 1e-13);
    EXPECT_EQ(o.values[1], 3);
    EXPECT_EQ(o.values[2], 16);
    expect_relative(o.values[3], 0.0006844538653704754L, 1e-6); // the F tail is good to six digits
    expect_relative(o.values[4], 0.3410942042270129L * 3 / 4 * 15 / 16, 1e-13);
    EXPECT_EQ(o.values[5], 4); // the empty group counts here
    EXPECT_EQ(o.values[6], 15);
}

// Statistical Reference Datasets, SmLs01 to SmLs09: F is the number of replicates.
TEST(OneWayAnova, MatchesCertifiedValues)
{
    const struct {
        double offset, tolerance; // the data themselves are rounded
    } cases[] = {{1, 1e-12}, {1e6, 2e-9}, {1e12, 2e-3}};
    for (const auto& c : cases)
        for (const int replicates : {21, 201, 2001}) {
            Doubles data;
            for (int group = 0; group < 9; ++group) {
                const double level = group == 0 ? 0.4 : group % 2 ? 0.3 : 0.5;
                data.push_back(c.offset + level);
                for (int i = 1; i < replicates; ++i)
                    data.push_back(c.offset + level + (i % 2 ? -0.1 : 0.1));
            }
            expect_relative(anova(data, std::vector<int>(9, replicates)).values[0], replicates, c.tolerance);
        }
}

struct Sums {
    long double n = 0, mean = 0, squares = 0;
    explicit Sums(const Doubles& values)
    {
        for (const double v : values)
            n += 1, mean += v;
        mean /= n > 0 ? n : 1;
        for (const double v : values)
            squares += (v - mean) * (v - mean);
    }
};

TEST(OneWayAnova, MatchesNaiveSums)
{
    std::mt19937_64 engine(7);
    for (int round = 0; round < 60; ++round) {
        std::vector<int> sizes;
        Doubles data;
        std::vector<Doubles> groups, distances;
        Doubles all, all_distances;
        const int longest = round % 3 == 0 ? 2500 : round % 3 == 1 ? 600 : 20;
        for (int g = 0; g < 4; ++g) {
            sizes.push_back(static_cast<int>(engine() % static_cast<unsigned>(longest)) + 2);
            Doubles group, distance;
            for (const double v : normal_sample(sizes.back(), static_cast<unsigned>(round * 10 + g), 100 + g, 2)) {
                const bool missing = round % 2 && engine() % 9 == 0;
                data.push_back(missing ? s_missing : v);
                if (!missing)
                    group.push_back(v);
            }
            const auto mean = static_cast<double>(Sums(group).mean);
            for (const double v : group)
                distance.push_back(std::abs(v - mean));
            all.insert(all.end(), group.begin(), group.end());
            all_distances.insert(all_distances.end(), distance.begin(), distance.end());
            groups.push_back(group);
            distances.push_back(distance);
        }
        const auto ratio = [](const std::vector<Doubles>& parts, const Doubles& whole) {
            long double within = 0;
            for (const Doubles& part : parts)
                within += Sums(part).squares;
            const Sums total(whole);
            return (total.squares - within) / 3 / (within / (total.n - 4));
        };
        const Outputs o = anova(data, sizes, 1);
        ASSERT_EQ(o.result, 0);
        expect_relative(o.values[0], ratio(groups, all), 1e-9);
        expect_relative(o.values[4], ratio(distances, all_distances), 1e-9);
        const double tail = cdf(complement(boost::math::fisher_f(3, o.values[2]), o.values[0]));
        EXPECT_NEAR(o.values[3], tail, 1e-6);
    }
}

TEST(OneWayAnova, Rules)
{
    const double nan = s_missing;
    EXPECT_EQ(anova({1, 2, 3}, {3}).code, 1);
    EXPECT_EQ(anova({1, 2, 3}, {3, 0, 0}).code, 1);
    EXPECT_EQ(anova({1, nan, nan}, {1, 2}).code, 1);
    EXPECT_EQ(anova({}, {}).code, 1);
    EXPECT_EQ(anova({1, 2, 3, 4}, {2, -5, 2}).result, 0); // a negative size is an empty group
    EXPECT_TRUE(anova({1, 2, 3}, {3}).untouched());
    EXPECT_EQ(anova({1, INFINITY, 3, 4}, {2, 2}).code, 2);
    // A group of missing values counts by its declared size.
    EXPECT_EQ(anova({1, 2, 3, 5, nan, nan}, {2, 2, 2}).values[1], 2);
    // No variance within: a division by zero, and a success.
    EXPECT_EQ(anova({1, 1, 2, 2}, {2, 2}).values[0], INFINITY);
    EXPECT_EQ(anova(Doubles(2000, 1.1), {1000, 1000}).result, 0);
    // Levene's test has a degree of freedom too few, the main one not.
    const Outputs o = anova({1, 2, 4}, {1, 2, 0}, 1);
    EXPECT_EQ(o.result, 0);
    EXPECT_EQ(o.code, 0);
    EXPECT_EQ(o.values[4], 0);
    EXPECT_EQ(o.values[5], 2);
    EXPECT_EQ(o.values[6], 0);
    EXPECT_EQ(o.values[7], 1);
}

TEST(ChiSquareTable, MatchesR) // chisq.test(t, correct = FALSE)
{
    const Outputs o = chi_square(2, 3, {12, 5, 7, 9, 3, 14});
    EXPECT_EQ(o.code, 0);
    expect_relative(o.values[0], 3.187003968253968L, 1e-14);
    EXPECT_EQ(o.values[1], 2);
    expect_relative(o.values[2], 0.203212716481337L, 1e-10);
    const Outputs with_empty_row = chi_square(3, 3, {12, 5, 7, 0, 0, 0, 9, 3, 14});
    EXPECT_EQ(with_empty_row.values[0], o.values[0]);
    EXPECT_EQ(with_empty_row.values[1], 4);
    EXPECT_NEAR(with_empty_row.values[2], cdf(complement(boost::math::chi_squared(4), o.values[0])), 1e-9);
}

TEST(ChiSquareTable, Rules)
{
    EXPECT_EQ(chi_square(2, 2, {0.1, 0.1, 0.1, 0.2}).code, 1);
    EXPECT_EQ(chi_square(1, 3, {1, 2, 3}).code, 1);
    EXPECT_EQ(chi_square(3, 1, {1, 2, 3}).code, 1);
    EXPECT_EQ(chi_square(-1, -1, {}).code, 1);
    EXPECT_TRUE(chi_square(1, 3, {1, 2, 3}).untouched());
    const Outputs expected = chi_square(2, 2, {2, 4, 4, 8});
    EXPECT_EQ(expected.values[0], 0);
    EXPECT_EQ(expected.values[2], 1);
}

} // namespace
} // namespace qmml::test
