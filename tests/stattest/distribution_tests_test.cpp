// Kolmogorov-Smirnov and Shapiro-Wilk.
#include "calls.h"

#include <boost/math/distributions/normal.hpp>
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <numeric>

namespace qmml::test {
namespace {

TEST(KolmogorovSmirnov, MatchesR) // ks.test(x, "pgamma", shape = 2, scale = 0.7)$statistic and so on
{
    const Doubles x = {0.31, 1.72, 0.98, 2.45, 0.77, 1.13, 0.52, 3.06, 1.48, 0.85};
    const struct {
        int family;
        std::array<double, 3> parameters;
        double d;
    } cases[] = {
        {1, {1.3, 0.8, 0}, 0.1841415111090925},  {3, {1.2, 0.4, 0}, 0.1579122720843811},
        {6, {0.8, 0, 0}, 0.2598994753556294},    {7, {1.5, 3, 0}, 0.1433145530069669},
        {8, {0.7, 2, 0}, 0.1203285689964302},    {9, {0.1, 0.7, 0}, 0.1028450122261467},
        {10, {1.4, 1.5, 0}, 0.1349485791906034},
    };
    for (const auto& c : cases) {
        Doubles sample = x;
        if (c.family == 7)
            for (double& v : sample)
                v /= 4;
        const Outputs o = kolmogorov_smirnov(c.family | 0x70000, c.parameters, sample); // low 16 bits
        EXPECT_EQ(o.result, 0);
        EXPECT_EQ(o.code, 0);
        EXPECT_NEAR(o.values[0], c.d, 2e-7) << c.family; // i_beta is good to six digits
        EXPECT_EQ(o.values[1], KSProbabilities__(o.values[0], 10, 0));
        EXPECT_EQ(o.values[2], c.family == 1 ? KSProbabilities__(o.values[0], 10, 1) : 1);
    }
}

TEST(KolmogorovSmirnov, DistanceIsThatOfTheDefinition)
{
    const boost::math::normal normal(10, 3);
    for (const int n : {3, 8, 50, 777, 5000}) {
        Doubles x = normal_sample(n, static_cast<unsigned>(n), 10, 3);
        const Outputs o = kolmogorov_smirnov(1, {10, 3, 0}, x);
        std::sort(x.begin(), x.end());
        double d = 0;
        for (int i = 0; i < n; ++i) {
            const double f = cdf(normal, x[static_cast<std::size_t>(i)]);
            d = std::max({d, std::abs(static_cast<double>(i) / n - f), std::abs((i + 1.0) / n - f)});
        }
        EXPECT_NEAR(o.values[0], d, 1e-11);
    }
}

TEST(KolmogorovSmirnov, Rules)
{
    double coded = 0;
    NANSet(3, &coded);
    EXPECT_EQ(kolmogorov_smirnov(1, {0, 1, 0}, {}).code, 1);
    EXPECT_EQ(kolmogorov_smirnov(1, {0, 1, 0}, {2, 2, 2 + 1e-15, s_missing, coded}).code, 1);
    EXPECT_EQ(kolmogorov_smirnov(1, {0, 1, 0}, {2, 3, 99, 99}, 99).code, 2);
    EXPECT_EQ(kolmogorov_smirnov(1, {0, 1, 0}, {2, 3, s_missing}, 99).result, 0); // the NaN counts, and ends somewhere
    EXPECT_EQ(kolmogorov_smirnov(1, {0, 1, 0}, {-1, 0, 1, 99, coded}, 99),
              kolmogorov_smirnov(1, {0, 1, 0}, {1, -1, 0}));
    for (const int family : {0, 13, -1, 0x10000}) {
        const Outputs o = kolmogorov_smirnov(family, {0, 1, 0}, {1, 2, 3});
        EXPECT_EQ(o.result, 1);
        EXPECT_EQ(o.code, 3);
        EXPECT_EQ(o.values[0], 0);
        EXPECT_EQ(o.values[1], 1);
        EXPECT_EQ(o.values[2], 1);
    }
    EXPECT_EQ(kolmogorov_smirnov(8, {0, 2, 0}, {1, 2, 3}).values[0],
              kolmogorov_smirnov(8, {1, 2, 0}, {1, 2, 3}).values[0]);
    // A family that fails has the distribution function -3.0e30.
    EXPECT_NEAR(kolmogorov_smirnov(1, {0, -1, 0}, {1, 2, 3}).values[0], 3e30, 1e15);
}

TEST(KolmogorovSmirnov, TabulatedProbabilities)
{
    const double at_001 = 0.01F, at_005 = 0.05F, at_01 = 0.1F, at_015 = 0.15F, at_02 = 0.2F;
    const struct {
        double d, n;
        int mode;
        double p;
    } cases[] = {
        {0.27F, 35, 0, at_005},
        {0.2701, 35, 0, at_001},
        {1.63F / 6.0, 36, 0, at_005},
        {1.63F / 6.0 + 1e-9, 36, 0, at_001},
        {0.21F, 21, 0, 1},
        {0.2101, 21, 0, at_02},
        {0.2201, 25, 0, at_015},
        {0.241, 22.5, 0, at_01},
        {0.899, 0, 0, 1},
        {0.3, 2, 1, 1},
        {0.32, 1, 1, at_015},
        {0.188, 30, 1, at_001},
        {1.031F / std::sqrt(31.0), 31, 1, at_005},
        {0.5, 10, 2, at_015},
        {0, 10, 5, at_001},
        {0.5, 10, 6, 1},
        {0.5, 10, -1, 1},
        {NAN, 10, 0, 1},
        {0.9, NAN, 0, 1},
    };
    for (const auto& c : cases)
        EXPECT_EQ(KSProbabilities__(c.d, c.n, c.mode), c.p) << c.d << " " << c.n << " " << c.mode;
}

// Complete samples: R's shapiro.test to nine digits, which computes the scores more closely; the rest from an
// independent rendering of AS R94 with AS 111.
TEST(ShapiroWilk, MatchesReference)
{
    Doubles to_50(50), weights = {148, 154, 158, 160, 161, 162, 166, 170, 182, 195, 236};
    std::iota(to_50.begin(), to_50.end(), 1);
    std::reverse(to_50.begin(), to_50.end());
    const Doubles twenty = {3.24, 0.93, 1.77, 2.21, 4.75, 0.36, 1.08, 2.67, 3.90, 5.12,
                            1.41, 0.58, 2.95, 6.33, 1.20, 0.77, 2.08, 3.51, 4.02, 1.66};
    const struct {
        Doubles data;
        int used;
        double w, p;
    } cases[] = {
        {{1, 2, 4}, 3, 0.964285714285714, 0.63688684502897},
        {{1, 1, 1, 9}, 4, 0.629776264554, 0.001240725915},
        {{2.1, 3.3, 1.7, 5.9, 4.2}, 5, 0.948313525210, 0.725135789451},
        {Doubles(weights.begin(), weights.end() - 1), 10, 0.908049114103, 0.267857557538},
        {weights, 11, 0.788814694863, 0.006703814062},
        {to_50, 50, 0.955582687559, 0.058091862177},
        {to_50, 40, 0.945294546131, 0.051058019646},
        {twenty, 20, 0.941805503725, 0.259323376972},
        {twenty, 18, 0.914356709065, 0.101745200243},
        {twenty, 15, 0.891582745562, 0.084820418392},
        {twenty, 10, 0.905928537724, 0.431316020021},
        {twenty, 4, 0.957514539187, 0.997013320320},
    };
    for (const auto& c : cases) {
        const Outputs o = shapiro_wilk(c.data, c.used);
        EXPECT_EQ(o.code, 0);
        EXPECT_NEAR(o.values[0], c.w, 2e-12);
        EXPECT_NEAR(o.values[1], c.p, 2e-12);
    }
}

TEST(ShapiroWilk, Codes)
{
    const struct {
        Doubles data;
        int used, code;
        double p;
    } cases[] = {
        {{1, 2}, 2, 1, 1},       {normal_sample(5001, 1), 5001, 2, -1}, {{1, 2, 3}, 2, 4, 1}, {{1, 2, 3}, 4, 5, 1},
        {{1, 2, 3, 4}, 3, 5, 1}, {normal_sample(21, 1), 4, 5, 1}, // 81 % censored
        {{5, 5, 5, 5}, 4, 6, 1}, {{0, 1e-30, 2e-30, 9e-30}, 4, 6, 1},
    };
    for (const auto& c : cases) {
        const Outputs o = shapiro_wilk(c.data, c.used);
        EXPECT_EQ(o.result, 1);
        EXPECT_EQ(o.code, c.code);
        EXPECT_EQ(o.values[0], 1);
        EXPECT_EQ(o.values[1], c.p);
    }
    EXPECT_TRUE(std::isnan(shapiro_wilk({1, 2, 4, 8}, 4, 1).values[0])); // no coefficients
    EXPECT_EQ(shapiro_wilk({1, 2, 4, 8}, 4, 0x10000), shapiro_wilk({1, 2, 4, 8}, 4));
    EXPECT_EQ(shapiro_wilk({0, 0, 2e-29}, 3).code, 0);
    EXPECT_NEAR(shapiro_wilk({0, 0, 1}, 3).values[1], 0.0, 1e-15); // W is at its least
}

} // namespace
} // namespace qmml::test
