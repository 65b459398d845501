#include "core/memory.h"
#include "core/missing.h"
#include "platform/levels.h"

#include <qmml/core.h>
#include <qmml/descstat.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstring>
#include <limits>
#include <random>
#include <vector>

namespace {

constexpr double s_nan = qmml::s_missing;

TEST(VectorSort, PutsMissingValuesLastInBothDirections)
{
    double values[] = {3, s_nan, 1};
    EXPECT_EQ(QelVectorSort(values, 1, 3), 1);
    EXPECT_TRUE(values[0] == 1 && values[1] == 3 && std::isnan(values[2]));
    EXPECT_EQ(QelVectorSort(values, 0, 3), 1);
    EXPECT_TRUE(values[0] == 3 && values[1] == 1 && std::isnan(values[2]));
    for (const int n : {0, -5})
        EXPECT_EQ(QelVectorSort(nullptr, 1, n), 1);
}

TEST(PlainSorts, Ascend)
{
    for (const bool simple : {false, true}) {
        double values[] = {2, -1, s_nan, 0.5, -std::numeric_limits<double>::infinity()};
        if (simple)
            SimpleDoubleSort(5, values);
        else
            SortDoubleArray(values, 5);
        EXPECT_TRUE(std::is_sorted(values, values + 4));
        EXPECT_TRUE(std::isnan(values[4]));
    }
    SimpleDoubleSort(0, nullptr);
    SortDoubleArray(nullptr, -1);
}

TEST(DualSort, MovesEachCompanionWithItsKey)
{
    for (const int ascending : {0, 1}) {
        std::array<double, 5> keys = {2, s_nan, 1, 3, 2}, companions = {20, 99, 10, 30, 15};
        EXPECT_EQ(QelVectorDualSort(keys.data(), companions.data(), ascending, 5, 5), 1);
        const std::array<double, 5> up = {10, 15, 20, 30, 99}, down = {30, 15, 20, 10, 99};
        EXPECT_EQ(companions, ascending ? up : down);
        EXPECT_TRUE(std::isnan(keys[4]));
    }
}

TEST(DualSort, WantsEqualLengths)
{
    double keys[] = {2, 1, 0}, companions[] = {1, 2, 3, 4};
    QMMLSetLastError(77);
    EXPECT_EQ(QelVectorDualSort(keys, companions, 1, 3, 4), 0);
    EXPECT_EQ(QMMLGetLastError(), 12551);
    EXPECT_EQ(keys[0], 2);
    EXPECT_EQ(QelVectorDualSort(nullptr, nullptr, 1, 0, 0), 1);
}

struct RankCase {
    const char* name;
    int ascending, tie_rule;
    std::vector<double> values, expected;
};
const RankCase s_ranks[] = {
    {"lowest", 1, 0, {10, 20, 20, 30}, {1, 2, 2, 4}},
    {"highest", 1, 1, {10, 20, 20, 30}, {1, 3, 3, 4}},
    {"average", 1, 2, {10, 20, 20, 30}, {1, 2.5, 2.5, 4}},
    {"any other rule", 1, -1, {10, 20, 20, 30}, {1, 2.5, 2.5, 4}},
    {"descending", 0, 2, {10, 20, 20, 30}, {4, 2.5, 2.5, 1}},
    {"zeros tie", 1, 2, {0.0, -0.0, -1, 0.0}, {3, 3, 1, 3}},
    {"missing ones tie at the end", 0, 0, {s_nan, 5, -s_nan, 6}, {3, 2, 3, 1}},
    {"all equal", 1, 1, {4, 4, 4}, {3, 3, 3}},
    {"single", 1, 0, {s_nan}, {1}},
};

TEST(VectorRank, FollowsTheTieRule)
{
    for (const auto& c : s_ranks)
        for (const auto level : qmml::platform::supported_levels()) {
            SCOPED_TRACE(c.name);
            const qmml::platform::ForcedLevel forced(level);
            auto values = c.values;
            EXPECT_EQ(QelVectorRank(values.data(), c.ascending, c.tie_rule, static_cast<int>(values.size())), 1);
            EXPECT_EQ(values, c.expected);
        }
    EXPECT_EQ(QelVectorRank(nullptr, 1, 0, 0), 1);
}

TEST(VectorRank, CountsTheValuesBelowAndTheEqualOnes)
{
    std::mt19937_64 generator(9);
    std::vector<double> values(3000);
    for (double& v : values)
        v = static_cast<double>(generator() % 700);
    auto ranks = values;
    ASSERT_EQ(QelVectorRank(ranks.data(), 1, 2, 3000), 1);
    for (std::size_t i = 0; i < values.size(); i += 7) {
        const auto below = std::count_if(values.begin(), values.end(), [&](double v) { return v < values[i]; });
        const auto equal = std::count(values.begin(), values.end(), values[i]);
        ASSERT_EQ(ranks[i], static_cast<double>(below) + static_cast<double>(equal + 1) / 2);
    }
}

TEST(VectorRank, LeavesTheValuesWithoutMemory)
{
    std::vector<double> values(2000);
    std::generate(values.begin(), values.end(), std::mt19937_64(1));
    const auto before = values;
    QMMLSetLastError(77);
    qmml::fail_allocation(1);
    EXPECT_EQ(QelVectorRank(values.data(), 1, 0, 2000), 0);
    qmml::fail_allocation(0);
    EXPECT_EQ(QMMLGetLastError(), 12558);
    EXPECT_EQ(values, before);
}

using Comparison = int (*)(const void*, const void*);

std::uint64_t leading(const void* element)
{
    std::uint64_t value = 0;
    std::memcpy(&value, element, 3);
    return value;
}

TEST(HeapSort, SortsElementsOfAnySize)
{
    constexpr Comparison by_leading = [](const void* a, const void* b) {
        return leading(a) < leading(b) ? -1 : leading(a) > leading(b) ? 1 : 0;
    };
    std::mt19937_64 generator(2);
    for (const unsigned size : {3u, 8u, 37u})
        for (const unsigned n : {0u, 1u, 2u, 3u, 10u, 1000u}) {
            std::vector<unsigned char> bytes(std::size_t{n} * size + 1, 0xEE);
            std::vector<std::uint64_t> expected(n), sorted(n);
            for (unsigned i = 0; i < n; ++i) {
                const std::uint64_t key = generator() % 5000;
                std::memcpy(&bytes[i * size], &key, 3);
                expected[i] = key;
            }
            std::sort(expected.begin(), expected.end());
            HugeHeapSort(bytes.data(), n, size, by_leading);
            for (unsigned i = 0; i < n; ++i)
                sorted[i] = leading(&bytes[i * size]);
            EXPECT_EQ(sorted, expected);
            EXPECT_EQ(bytes.back(), 0xEE);
        }
    HugeHeapSort(nullptr, 0, 8, by_leading);
    HugeHeapSort(nullptr, 4000000000u, 0, by_leading);
}

TEST(HeapSort, OutlivesContradictoryComparisons)
{
    static std::mt19937_64 s_generator(4);
    const Comparison contradictory[] = {
        [](const void*, const void*) { return 1; },
        [](const void*, const void*) { return -1; },
        [](const void*, const void*) { return static_cast<int>(s_generator() % 3) - 1; },
    };
    for (const auto comparison : contradictory) {
        std::vector<int> values(777);
        for (std::size_t i = 0; i < values.size(); ++i)
            values[i] = static_cast<int>(i);
        const auto before = values;
        HugeHeapSort(values.data(), 777, sizeof(int), comparison);
        std::sort(values.begin(), values.end());
        EXPECT_EQ(values, before);
    }
}

} // namespace
