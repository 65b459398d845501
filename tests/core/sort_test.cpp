#include "core/sort.h"

#include "core/memory.h"
#include "core/missing.h"
#include "core/sort_kernels.h"
#include "core/sort_network.h"
#include "platform/levels.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstring>
#include <limits>
#include <numeric>
#include <random>
#include <vector>

namespace {

using qmml::Direction;

constexpr double s_inf = std::numeric_limits<double>::infinity();

// Lengths around the vectors, the networks and the changes of method.
constexpr int s_lengths[] = {0,   1,   2,   3,   7,   8,   9,   15,  16,  17,   31,   33,    63,    64,   65,
                             100, 127, 128, 129, 200, 255, 257, 511, 513, 1000, 4001, 16384, 16385, 70001};
enum Pattern { random_bits, ordinary, few_values, constant, ascending, descending, organ_pipe, special, s_patterns };

std::vector<double> make(int pattern, int n, std::mt19937_64& generator)
{
    std::vector<double> v(static_cast<std::size_t>(n));
    const double specials[] = {-0.0, 0.0, s_inf, -s_inf, std::nan("1"), -std::nan("2"), 5e-324, -5e-324, 1};
    for (int i = 0; i < n; ++i) {
        const std::uint64_t r = generator();
        const double values[s_patterns] = {std::bit_cast<double>(r),
                                           static_cast<double>(static_cast<std::int64_t>(r)),
                                           static_cast<double>(r % 10),
                                           -3.5,
                                           i - 100.0,
                                           100.0 - i,
                                           static_cast<double>(std::min(i, n - i)),
                                           specials[r % std::size(specials)]};
        v[static_cast<std::size_t>(i)] = values[pattern];
    }
    return v;
}

// Values in the promised order, -0.0 next to 0.0; any order among what is missing.
bool comes_before(double a, double b, Direction direction)
{
    if (std::isnan(a) || std::isnan(b))
        return !std::isnan(a) && std::isnan(b);
    return direction == Direction::ascending ? a < b : a > b;
}

std::vector<std::uint64_t> sorted_bits(const std::vector<double>& v)
{
    std::vector<std::uint64_t> bits(v.size());
    std::transform(v.begin(), v.end(), bits.begin(), [](double x) { return qmml::bits_of(x); });
    std::sort(bits.begin(), bits.end());
    return bits;
}

template <class Check>
void for_all_cases(Check check)
{
    std::mt19937_64 generator(7);
    for (int pattern = 0; pattern < s_patterns; ++pattern)
        for (const int n : s_lengths) {
            const std::vector<double> values = make(pattern, n, generator);
            for (const auto direction : {Direction::ascending, Direction::descending}) {
                SCOPED_TRACE(testing::Message() << "pattern " << pattern << " n " << n << " descending "
                                                << (direction != Direction::ascending));
                check(values, direction);
            }
        }
}

TEST(Sort, OrdersEveryPatternAndLosesNothingAtEveryLevel)
{
    for_all_cases([](const std::vector<double>& values, Direction direction) {
        std::vector<double> first;
        for (const auto level : qmml::platform::supported_levels()) {
            const qmml::platform::ForcedLevel forced(level);
            auto v = values;
            qmml::sort_values(v.data(), static_cast<std::int64_t>(v.size()), direction);
            if (first.empty() && !v.empty()) {
                first = v;
                ASSERT_TRUE(std::is_sorted(v.begin(), v.end(),
                                           [=](double a, double b) { return comes_before(a, b, direction); }));
                ASSERT_EQ(sorted_bits(v), sorted_bits(values));
            } else if (!v.empty()) {
                ASSERT_EQ(std::memcmp(v.data(), first.data(), v.size() * sizeof(double)), 0);
            }
        }
    });
}

TEST(Sort, MovesCompanionsWithTheirKeysAtEveryLevel)
{
    for_all_cases([](const std::vector<double>& values, Direction direction) {
        for (const auto level : qmml::platform::supported_levels()) {
            const qmml::platform::ForcedLevel forced(level);
            const auto n = static_cast<std::int64_t>(values.size());
            auto keys = values;
            std::vector<std::int64_t> positions(values.size());
            std::iota(positions.begin(), positions.end(), 0);
            std::shuffle(positions.begin(), positions.end(), std::mt19937_64(1));
            for (std::size_t i = 0; i < keys.size(); ++i)
                keys[i] = values[static_cast<std::size_t>(positions[i])];
            qmml::sort_with_companions(keys.data(), positions.data(), n, direction);
            ASSERT_TRUE(std::is_sorted(keys.begin(), keys.end(),
                                       [=](double a, double b) { return comes_before(a, b, direction); }));
            for (std::size_t i = 0; i < keys.size(); ++i) {
                ASSERT_EQ(qmml::bits_of(keys[i]), qmml::bits_of(values[static_cast<std::size_t>(positions[i])]));
                if (i > 0 && !std::isnan(keys[i]) && qmml::bits_of(keys[i]) == qmml::bits_of(keys[i - 1])) {
                    ASSERT_GT(positions[i], positions[i - 1]);
                }
            }
            std::sort(positions.begin(), positions.end());
            for (std::size_t i = 0; i < keys.size(); ++i)
                ASSERT_EQ(positions[i], static_cast<std::int64_t>(i));
        }
    });
}

TEST(Sort, KeepsGroupNumbersOfEitherSign)
{
    double keys[] = {3, 1, 2, 1, 2};
    std::int32_t groups[] = {INT32_MAX, 5, -1, INT32_MIN, -2};
    ASSERT_TRUE(qmml::sort_with_companions(keys, groups, 5, Direction::ascending));
    const std::int32_t expected[] = {INT32_MIN, 5, -2, -1, INT32_MAX};
    EXPECT_TRUE(std::equal(groups, groups + 5, expected));

    double untouched[] = {2, 1};
    qmml::fail_allocation(1);
    EXPECT_FALSE(qmml::sort_with_companions(untouched, groups, 2, Direction::ascending));
    qmml::fail_allocation(0);
    EXPECT_EQ(untouched[0], 2);
    EXPECT_EQ(groups[0], INT32_MIN);
}

TEST(SelectRanks, FindsWhatSortingWouldPutThere)
{
    std::mt19937_64 generator(11);
    for_all_cases([&](const std::vector<double>& values, Direction direction) {
        if (values.empty() || direction == Direction::descending)
            return;
        const auto n = static_cast<std::int64_t>(values.size());
        auto expected = values;
        qmml::sort_ascending(expected.data(), n);
        std::int64_t ranks[3];
        std::generate(ranks, ranks + 3, [&] { return static_cast<std::int64_t>(generator() % values.size()); });
        std::sort(ranks, ranks + 3);
        for (const auto level : qmml::platform::supported_levels()) {
            const qmml::platform::ForcedLevel forced(level);
            auto v = values;
            qmml::select_ranks(v.data(), n, ranks, 3);
            for (const auto rank : ranks)
                ASSERT_EQ(qmml::bits_of(v[static_cast<std::size_t>(rank)]),
                          qmml::bits_of(expected[static_cast<std::size_t>(rank)]));
        }
    });
}

// As on values that mislead every sample: from then on the range of the keys is halved.
TEST(SortKernels, SortWithoutSampledPivots)
{
    for_all_cases([](const std::vector<double>& values, Direction direction) {
        if (values.size() < 2 || direction == Direction::descending)
            return;
        const auto n = static_cast<std::int64_t>(values.size());
        auto expected = values;
        for (double& v : expected) // the kernel's own order, that of integers
            v = std::bit_cast<double>(qmml::bits_of(v) & INT64_MAX);
        auto integers = expected;
        std::sort(expected.begin(), expected.end(),
                  [](double a, double b) { return qmml::bits_of(a) < qmml::bits_of(b); });
        for (const auto level : qmml::platform::supported_levels()) {
            const qmml::platform::ForcedLevel forced(level);
            auto v = integers;
            qmml::s_sort_kernels->sort(v.data(), n, {0, 0}, 0);
            ASSERT_EQ(std::memcmp(v.data(), expected.data(), v.size() * sizeof(double)), 0);
        }
    });
}

// A network sorts everything if it sorts all sequences of zeros and ones (Knuth, volume 3, 5.3.4).
TEST(SortNetwork, SortsAllZerosAndOnes)
{
    using Network = qmml::Network<qmml::KeysOnly<qmml::ScalarKeys>, 16>;
    for (unsigned bits = 0; bits < 1u << 16; ++bits) {
        Network::Row rows[16];
        for (unsigned i = 0; i < 16; ++i)
            rows[i].key = bits >> i & 1;
        Network::sort(rows);
        ASSERT_TRUE(std::is_sorted(rows, rows + 16, [](auto a, auto b) { return a.key < b.key; })) << bits;
    }
}

} // namespace
