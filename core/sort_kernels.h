// The kernels of the sorting engine, one set per instruction set. All sets give the same order of keys.
#pragma once

#include "platform/levels.h"

#include <cstdint>

namespace qmml {

// How the bits of a double become a key, a signed integer that ascends in the wanted order: the negative numbers'
// bits are reflected, `flip` (0 or -1) turns the direction, and `offset` turns the circle of integers until the first
// infinity is the lowest key, which leaves what is missing at the other end.
struct KeyMap {
    std::int64_t flip, offset;
};

struct SortKernels {
    // As many of the pivots on a way down as this come from samples.
    void (*sort)(double* values, std::int64_t count, KeyMap map, int sampled_pivots) noexcept;
    // The highest key must not occur: sort missing values separately.
    void (*sort_pairs)(double* keys, double* companions, std::int64_t count, KeyMap map, int sampled_pivots) noexcept;
    // Only the parts in which a rank lies are sorted, the rest is scratch afterwards.
    void (*select)(double* values, std::int64_t count, KeyMap map, int sampled_pivots, const std::int64_t* ranks,
                   int rank_count) noexcept;
};

extern const SortKernels s_sort_baseline, s_sort_avx2, s_sort_avx512;
inline constexpr platform::KernelSets<SortKernels> s_sort_kernels = QMML_KERNEL_SETS(s_sort);

} // namespace qmml
