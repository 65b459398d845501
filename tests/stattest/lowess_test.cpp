#include "calls.h"
#include "core/memory.h"
#include "platform/levels.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <limits>

namespace qmml::test {
namespace {

using platform::ForcedLevel, platform::supported_levels;

const Doubles s_x = {1, 2, 3, 4, 5, 6, 6, 6, 6, 6, 6, 6, 6, 6, 6, 8, 10, 12, 14, 50};
const Doubles s_y = {18, 2, 15, 6, 10, 4, 16, 11, 7, 3, 14, 17, 20, 12, 9, 13, 1, 8, 5, 19};

// Printed with the routine of 1985.
TEST(Lowess, MatchesPublishedCase)
{
    const struct {
        double f;
        int steps;
        double delta;
        Doubles smoothed;
    } cases[] = {
        {0.25, 0, 0, {13.6588, 11.1446, 8.70117, 9.72204, 10, 11.3, 13, 6.4399, 5.59591, 5.45567, 18.9982}},
        {0.25, 0, 3, {13.6588, 12.3466, 11.0343, 9.72204, 10.511, 11.3, 13, 6.4399, 5.59591, 5.45567, 18.9982}},
        {0.25, 2, 0, {14.8112, 12.1154, 8.98377, 9.67567, 10, 11.346, 13, 6.73445, 5.74366, 5.41467, 18.9981}},
        {0.5, 2, 0, {14.4438, 12.2421, 9.76113, 9.71085, 10, 11.3418, 13, 6.70813, 5.73034, 5.41821, 18.9954}},
    };
    for (const auto& c : cases) {
        const Smoothed s = lowess(s_x, s_y, c.f, c.steps, c.delta);
        EXPECT_EQ(s.result, 0);
        EXPECT_EQ(s.code, 0);
        for (std::size_t i = 0; i < s_x.size(); ++i) {
            const double expected = c.smoothed[i < 5 ? i : i < 15 ? 5 : i - 9];
            EXPECT_NEAR(s.ys[i], expected, 6e-6 * expected) << i;
            EXPECT_EQ(s.res[i], s_y[i] - s.ys[i]);
        }
    }
}

// The definition of a fit, point by point: no walk, no interpolation, no lanes.
Doubles naive_pass(const Doubles& x, const Doubles& y, std::size_t neighbours, const Doubles& robustness)
{
    Doubles fitted;
    for (const double at : x) {
        Doubles distances;
        for (const double v : x)
            distances.push_back(std::abs(v - at));
        Doubles sorted = distances;
        std::sort(sorted.begin(), sorted.end());
        const double h = sorted[neighbours - 1];
        long double w0 = 0, wx = 0, wy = 0, wxx = 0, wxy = 0;
        for (std::size_t j = 0; j < x.size(); ++j) {
            if (distances[j] > 0.999 * h)
                continue;
            const double ratio = distances[j] / h;
            const long double w = robustness[j] * (distances[j] <= 0.001 * h ? 1 : std::pow(1 - std::pow(ratio, 3), 3));
            const long double dx = x[j] - at;
            w0 += w, wx += w * dx, wy += w * y[j], wxx += w * dx * dx, wxy += w * dx * y[j];
        }
        fitted.push_back(static_cast<double>((wxx * wy - wx * wxy) / (w0 * wxx - wx * wx)));
    }
    return fitted;
}

TEST(Lowess, MatchesNaiveFits)
{
    for (const int n : {23, 150}) {
        Doubles x = normal_sample(n, 5), y = normal_sample(n, 6, 3);
        std::sort(x.begin(), x.end());
        Doubles robustness(x.size(), 1), expected;
        for (int step = 0; step < 3; ++step) {
            expected = naive_pass(x, y, static_cast<std::size_t>(n * 0.4), robustness);
            Doubles residuals, sorted;
            for (std::size_t i = 0; i < x.size(); ++i)
                residuals.push_back(std::abs(y[i] - expected[i]));
            sorted = residuals;
            std::sort(sorted.begin(), sorted.end());
            const double scale = 3 * (sorted[(x.size() - 1) / 2] + sorted[x.size() / 2]);
            for (std::size_t i = 0; i < x.size(); ++i)
                robustness[i] = residuals[i] <= 0.001 * scale   ? 1
                                : residuals[i] <= 0.999 * scale ? std::pow(1 - std::pow(residuals[i] / scale, 2), 2)
                                                                : 0;
        }
        const Smoothed s = lowess(x, y, 0.4, 2, 0);
        for (std::size_t i = 0; i < x.size(); ++i)
            EXPECT_NEAR(s.ys[i], expected[i], 1e-11);
    }
}

// Several fits side by side give the bits of one after the other, which is what happens without memory.
TEST(Lowess, SameBitsAtEveryLevelAndWithoutMemory)
{
    for (const double f : {0.05, 0.3, 0.9})
        for (const double delta : {0.0, 0.05})
            for (const double grid : {1e-9, 0.2}) { // few ties, many
                Doubles x = normal_sample(301, 8), y = normal_sample(301, 9);
                for (double& v : x)
                    v = std::round(v / grid) * grid;
                std::sort(x.begin(), x.end());
                fail_allocation(1);
                const Smoothed one_by_one = lowess(x, y, f, 3, delta);
                fail_allocation(0);
                for (const auto level : supported_levels()) {
                    const ForcedLevel forced(level);
                    EXPECT_EQ(lowess(x, y, f, 3, delta), one_by_one) << f << " " << delta << " " << grid;
                }
            }
}

TEST(Lowess, Rules)
{
    EXPECT_EQ(
        lowess(Doubles(4001), Doubles(4001), 0.5, 0, 0),
        (Smoothed{1, s_no_code, Doubles(4001, s_unwritten), Doubles(4001, s_unwritten), Doubles(4001, s_unwritten)}));
    EXPECT_EQ(lowess({}, {}, 0.5, 0, 0).code, 2);
    EXPECT_EQ(lowess({4}, {7}, 0.5, 3, 0), (Smoothed{0, 0, {7}, {s_unwritten}, {s_unwritten}}));
    // Clamped: the span to two points, of which only the one fitted has weight, and to n - 1; the steps; delta.
    EXPECT_EQ(lowess(s_x, s_y, 0, 0, 0).ys[1], s_y[1]);
    EXPECT_EQ(lowess(s_x, s_y, 7, 1, 0), lowess(s_x, s_y, 0.95, 1, 0));
    EXPECT_EQ(lowess(s_x, s_y, 0.5, 1000, -3), lowess(s_x, s_y, 0.5, 500, 0));
    // Nothing left over: every weight is 1.
    const Smoothed exact = lowess({1, 2, 3, 4}, {0, 0, 0, 0}, 0.9, 2, 0);
    EXPECT_EQ(exact.ys, Doubles(4));
    EXPECT_EQ(exact.rw, Doubles(4, 1));
}

TEST(Lowess, SurvivesAnything)
{
    const double infinity = std::numeric_limits<double>::infinity();
    const Doubles values = {s_missing, infinity, -infinity, 0, 1, -1, 1e308, -1e308, 5e-324, 3};
    std::mt19937_64 engine(4);
    for (int round = 0; round < 400; ++round) {
        Doubles x(engine() % 40 + 1), y(x.size());
        for (std::size_t i = 0; i < x.size(); ++i) {
            x[i] = values[engine() % values.size()];
            y[i] = values[engine() % values.size()];
        }
        if (round % 2)
            std::sort(x.begin(), x.end(), [](double a, double b) { return a < b || (a == a && b != b); });
        EXPECT_EQ(lowess(x, y, values[engine() % values.size()], 3, values[engine() % values.size()]).result, 0);
    }
}

} // namespace
} // namespace qmml::test
