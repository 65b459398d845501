#include "core/block.h"
#include "core/missing.h"
#include "core/sort.h"
#include "descstat/result.h"

#include <qmml/descstat.h>

#include <cstdint>

namespace qmml::descstat {
namespace {

enum class TieRule { lowest, highest, average };

TieRule tie_rule(int rule) noexcept
{
    return rule == 0 ? TieRule::lowest : rule == 1 ? TieRule::highest : TieRule::average;
}

// Of two that are not missing. On the bits, since a comparison of denormal numbers may trap.
bool are_equal(double a, double b) noexcept
{
    return bits_of(a) == bits_of(b) || (bits_of(a) | bits_of(b)) << 1 == 0;
}

std::uint64_t twice_rank(TieRule rule, std::int64_t first, std::int64_t last) noexcept
{
    const std::int64_t lowest = first + 1, highest = last;
    return static_cast<std::uint64_t>(rule == TieRule::lowest    ? 2 * lowest
                                      : rule == TieRule::highest ? 2 * highest
                                                                 : lowest + highest);
}

// The values are sorted in place; then a word of each position and rank together goes back to where it came from, so
// that one work array is enough.
void replace_by_ranks(double* values, std::int64_t* words, std::int64_t count, Direction direction,
                      TieRule rule) noexcept
{
    constexpr int position_bits = 31;
    constexpr std::int64_t position_mask = (std::int64_t{1} << position_bits) - 1;
    for (std::int64_t i = 0; i < count; ++i)
        words[i] = i;
    const std::int64_t present = sort_with_companions_loosely(values, words, count, direction);
    for (std::int64_t first = 0, last = 0; first < count; first = last) {
        if (first == present) {
            last = count;
        } else {
            for (last = first + 1; last < present && are_equal(values[last], values[first]);)
                ++last;
        }
        const auto rank = static_cast<std::int64_t>(twice_rank(rule, first, last) << position_bits);
        for (std::int64_t i = first; i < last; ++i)
            words[i] |= rank;
    }
    for (std::int64_t i = 0; i < count; ++i)
        values[words[i] & position_mask] = static_cast<double>(words[i] >> position_bits) / 2;
}

} // namespace
} // namespace qmml::descstat

int QelVectorRank(double* values, int ascending, int tieRule, int n)
{
    using namespace qmml;
    if (n < 1)
        return 1;
    if (n == 1) {
        values[0] = 1.0;
        return 1;
    }
    const Direction direction = direction_of(ascending);
    const descstat::TieRule rule = descstat::tie_rule(tieRule);
    constexpr int on_stack = 1024;
    if (n <= on_stack) {
        std::int64_t words[on_stack];
        descstat::replace_by_ranks(values, words, n, direction, rule);
        return 1;
    }
    Block<std::int64_t> words(n);
    if (!words)
        return descstat::fail(descstat::s_no_memory);
    descstat::replace_by_ranks(values, words.data(), n, direction, rule);
    return 1;
}
