// The sorting engine: in place and without memory of its own, the same order at every instruction set level. Values
// are ordered by their bits, so that no NaN raises a fault: missing values come last in both directions with their bits
// kept, and -0.0 stands next to 0.0.
#pragma once

#include <cstdint>

namespace qmml {

enum class Direction { ascending, descending };

inline Direction direction_of(int ascending) noexcept
{
    return ascending ? Direction::ascending : Direction::descending;
}

void sort_values(double* values, std::int64_t count, Direction direction) noexcept;

inline void sort_ascending(double* values, std::int64_t count) noexcept
{
    sort_values(values, count, Direction::ascending);
}

// Each companion moves with its key. Among keys with the same bits the companions ascend; those of missing keys come in
// any order, the same at every level.
void sort_with_companions(double* keys, double* companions, std::int64_t count, Direction direction) noexcept;
// Positions and the like, none below 0.
void sort_with_companions(double* keys, std::int64_t* companions, std::int64_t count, Direction direction) noexcept;
// Takes 8 bytes for each value; false without memory, the arrays then being as they were.
[[nodiscard]] bool sort_with_companions(double* keys, std::int32_t* companions, std::int64_t count,
                                        Direction direction) noexcept;

// Where the order of the companions of equal keys does not show in the end: it may be another at each level. Returns
// how many keys are not missing.
std::int64_t sort_with_companions_loosely(double* keys, std::int64_t* companions, std::int64_t count,
                                          Direction direction) noexcept;

// Puts the given ranks (counted from 0, ascending, each below count) in their places: values[rank] is what sorting
// ascending would put there. The other values are lost.
void select_ranks(double* values, std::int64_t count, const std::int64_t* ranks, int rank_count) noexcept;

} // namespace qmml
