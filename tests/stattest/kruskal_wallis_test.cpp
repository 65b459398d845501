#include "calls.h"
#include "core/memory.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>

namespace qmml::test {
namespace {

TEST(KruskalWallis, MatchesR) // kruskal.test(values, group)
{
    Doubles values = {6.4, 6.8, 7.2, 8.3, 8.4, 9.1, 9.4, 9.7, 2.5, 3.7, 4.9,
                      5.4, 5.9, 8.1, 8.2, 1.3, 4.1, 4.9, 5.2, 5.5, 8.2};
    std::vector<int> group = {0, 0, 0, 0, 0, 0, 0, 0, 1, 1, 1, 1, 1, 1, 1, 2, 2, 2, 2, 2, 2};
    const Outputs o = kruskal_wallis(group, values, 3);
    EXPECT_EQ(o.result, 0);
    EXPECT_EQ(o.code, s_no_code);
    EXPECT_NEAR(o.values[0], 9.849061861415572, 1e-13);
    EXPECT_EQ(o.values[1], 2);
    EXPECT_NEAR(o.values[2], 0.007266133800809757, 1e-12);
    EXPECT_EQ(o.values[3], 8);
    EXPECT_TRUE(std::is_sorted(values.begin(), values.end()));
}

// Ranks by counting, with ties, strays and without the memory that sorting would like.
TEST(KruskalWallis, RanksAreCounts)
{
    for (const bool without_memory : {false, true}) {
        std::mt19937_64 engine(3);
        Doubles values(301), ranks;
        std::vector<int> group(values.size());
        for (std::size_t i = 0; i < values.size(); ++i) {
            values[i] = static_cast<double>(engine() % 40) - 20.5;
            group[i] = static_cast<int>(engine() % 5) - 1;
        }
        std::array<double, 3> sums{};
        for (std::size_t i = 0; i < values.size(); ++i) {
            const auto below = std::count_if(values.begin(), values.end(), [&](double w) { return w < values[i]; });
            const auto equal = std::count(values.begin(), values.end(), values[i]);
            ranks.push_back(static_cast<double>(below) + (static_cast<double>(equal) + 1) / 2);
            if (group[i] >= 0 && group[i] < 3)
                sums[static_cast<std::size_t>(group[i])] += ranks.back();
        }
        std::sort(ranks.begin(), ranks.end());
        fail_allocation(without_memory);
        const Outputs o = kruskal_wallis(group, values, 3);
        fail_allocation(0);
        EXPECT_EQ(o.result, 0);
        EXPECT_EQ(values, ranks);
        for (std::size_t g = 0; g < 3; ++g)
            EXPECT_EQ(o.values[4 + 2 * g], sums[g]);
    }
}

TEST(KruskalWallis, Rules)
{
    std::vector<int> group = {0, 1};
    Doubles values = {2, 1};
    Outputs o = kruskal_wallis(group, values, 2);
    EXPECT_EQ(o.result, 1);
    EXPECT_EQ(o.code, 1);
    EXPECT_EQ(values[0], 2);
    const struct {
        std::vector<int> group;
        Doubles values;
        int groups;
        double df, p;
    } cases[] = {
        {{0, 1, 0, 1}, {5, 5, 5, 5}, 2, 1, 1}, // nothing but ties
        {{0, 1, 0, 1}, {1, 2, 3, 4}, 3, 2, 1}, // an empty group
        {{0, 0, 0}, {1, 2, 3}, 1, 0, 1},
        {{7, -3, 0x7fffffff}, {1, 2, 3}, 2, 1, 1},
    };
    for (auto c : cases) {
        o = kruskal_wallis(c.group, c.values, c.groups);
        EXPECT_EQ(o.result, 0);
        EXPECT_EQ(o.values[0], 0);
        EXPECT_EQ(o.values[1], c.df);
        EXPECT_EQ(o.values[2], c.p);
    }
}

} // namespace
} // namespace qmml::test
