#include "core/sort.h"

#include "core/block.h"
#include "core/missing.h"
#include "core/sort_kernels.h"

#include <bit>
#include <utility>

namespace qmml {
namespace {

constexpr KeyMap key_map(Direction direction) noexcept
{
    constexpr std::uint64_t lowest = std::uint64_t{1} << 63, infinity = 0x7FF0000000000000u;
    // Ascending, minus infinity has the reflected bits ~infinity; descending, infinity has them.
    return {direction == Direction::ascending ? 0 : -1, static_cast<std::int64_t>(lowest - ~infinity)};
}
static_assert(key_map(Direction::descending).offset == key_map(Direction::ascending).offset);

// Twice as many as halvings would need: bad ones are forgiven for a while.
int sampled_pivots(std::int64_t count) noexcept
{
    return 2 * (64 - std::countl_zero(static_cast<std::uint64_t>(count)));
}

// Integers alone, in a loop that the compiler makes vectors of: the sum's top bit is set for a NaN.
bool has_missing(const double* keys, std::int64_t count) noexcept
{
    std::uint64_t any = 0;
    for (std::int64_t i = 0; i < count; ++i)
        any |= (bits_of(keys[i]) & INT64_MAX) + 0x000FFFFFFFFFFFFFu;
    return any >> 63 != 0;
}

// Returns how many are not missing; these come first.
template <class Companion>
std::int64_t put_missing_last(double* keys, Companion* companions, std::int64_t count) noexcept
{
    if (!has_missing(keys, count))
        return count;
    for (std::int64_t i = 0; i < count;) {
        if (is_nan(keys[i])) {
            --count;
            std::swap(keys[i], keys[count]);
            std::swap(companions[i], companions[count]);
        } else {
            ++i;
        }
    }
    return count;
}

// Companions of equal keys in an order of their own, so that no level's order shows.
void settle(double* companions, std::int64_t count) noexcept
{
    sort_ascending(companions, count);
}
void settle(std::int64_t* companions, std::int64_t count) noexcept
{
    constexpr KeyMap not_negative = {0, 0};
    s_sort_kernels->sort(reinterpret_cast<double*>(companions), count, not_negative, sampled_pivots(count));
}

template <class Companion>
void settle_runs(const double* keys, Companion* companions, std::int64_t count) noexcept
{
    for (std::int64_t i = 1; i < count; ++i) {
        if (bits_of(keys[i]) != bits_of(keys[i - 1])) [[likely]]
            continue;
        const std::int64_t first = i - 1;
        while (i < count && bits_of(keys[i]) == bits_of(keys[first]))
            ++i;
        settle(companions + first, i - first);
    }
}

// The kernels move companions by their bits, whatever these stand for.
template <class Companion>
std::int64_t sort_pairs_loosely(double* keys, Companion* companions, std::int64_t count, Direction direction) noexcept
{
    static_assert(sizeof(Companion) == sizeof(double));
    const std::int64_t present = put_missing_last(keys, companions, count);
    if (present > 1)
        s_sort_kernels->sort_pairs(keys, reinterpret_cast<double*>(companions), present, key_map(direction),
                                   sampled_pivots(present));
    return present;
}

template <class Companion>
void sort_pairs(double* keys, Companion* companions, std::int64_t count, Direction direction) noexcept
{
    settle_runs(keys, companions, sort_pairs_loosely(keys, companions, count, direction));
}

} // namespace

void sort_values(double* values, std::int64_t count, Direction direction) noexcept
{
    if (count > 1)
        s_sort_kernels->sort(values, count, key_map(direction), sampled_pivots(count));
}

void sort_with_companions(double* keys, double* companions, std::int64_t count, Direction direction) noexcept
{
    sort_pairs(keys, companions, count, direction);
}

void sort_with_companions(double* keys, std::int64_t* companions, std::int64_t count, Direction direction) noexcept
{
    sort_pairs(keys, companions, count, direction);
}

bool sort_with_companions(double* keys, std::int32_t* companions, std::int64_t count, Direction direction) noexcept
{
    if (count < 2)
        return true;
    Block<std::int64_t> wide(count);
    if (!wide)
        return false;
    for (std::int64_t i = 0; i < count; ++i)
        wide.data()[i] = std::int64_t{companions[i]} - INT32_MIN;
    sort_with_companions(keys, wide.data(), count, direction);
    for (std::int64_t i = 0; i < count; ++i)
        companions[i] = static_cast<std::int32_t>(wide.data()[i] + INT32_MIN);
    return true;
}

std::int64_t sort_with_companions_loosely(double* keys, std::int64_t* companions, std::int64_t count,
                                          Direction direction) noexcept
{
    return sort_pairs_loosely(keys, companions, count, direction);
}

void select_ranks(double* values, std::int64_t count, const std::int64_t* ranks, int rank_count) noexcept
{
    if (count > 0)
        s_sort_kernels->select(values, count, key_map(Direction::ascending), sampled_pivots(count), ranks, rank_count);
}

} // namespace qmml
