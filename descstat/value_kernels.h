// Passes over the values of a column, one set per instruction set. All sets give the same bits.
#pragma once

#include "platform/levels.h"

#include <cstdint>

namespace qmml::descstat {

inline constexpr int s_block = 512;   // values whose moments are taken at a time
inline constexpr int s_overshoot = 8; // what is written behind the values that are kept

struct BlockMoments {
    double mean, squares; // the sum of the squared deviations from the mean
};

// An interval of the order of the bits, both ends in it.
struct Interval {
    double low, high;
};

struct ValueKernels {
    std::int64_t (*count_present)(const double* values, std::int64_t count) noexcept;
    // Copies what is not missing, and has room for s_overshoot values more. Returns how many.
    std::int64_t (*copy_present)(double* out, const double* values, std::int64_t count) noexcept;
    // Up to s_block values, in an order of additions that depends on their number alone. The rest of the block serves
    // as scratch.
    double (*block_sum)(double* block, int count) noexcept;
    double (*block_mean)(double* block, int count) noexcept;
    BlockMoments (*block_moments)(double* block, int count) noexcept;
    // Returns how many are not missing; without any the result is of no use.
    std::int64_t (*minimum)(const double* values, std::int64_t count, double* result) noexcept;
    std::int64_t (*maximum)(const double* values, std::int64_t count, double* result) noexcept;
    // Adds to *below how many are below the interval. Copies what is inside, as copy_present does, and returns how
    // many.
    std::int64_t (*split)(double* inside, const double* values, std::int64_t count, Interval interval,
                          std::int64_t* below) noexcept;
};

extern const ValueKernels s_value_baseline, s_value_avx2, s_value_avx512;
inline constexpr platform::KernelSets<ValueKernels> s_value_kernels = QMML_KERNEL_SETS(s_value);

} // namespace qmml::descstat
