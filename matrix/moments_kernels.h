// The moments' inner loops, one set per instruction set. All sets give the same bits.
//
// Cases come in tiles, variables in strips of eight. A strip of a tile holds its cases one after the other, eight
// numbers each; a whole tile is its strips one after the other. Lanes are variables: every case enters every sum in its
// turn.
#pragma once

#include "matrix/rounded_difference.h"
#include "platform/levels.h"

#include <cstddef>

namespace qmml::matrix {

inline constexpr int s_strip = 8;       // variables
inline constexpr int s_tile_cases = 32; // a multiple of eight
inline constexpr int s_block = s_strip * s_strip;

struct MomentKernels {
    // 3e30 or the smallest of what is strictly below it.
    double (*minimum)(const double* x, std::ptrdiff_t n) noexcept;

    void (*rounded_differences)(const double* x, std::ptrdiff_t n, const RoundedShift& shift, double* out) noexcept;

    // Eight columns, which begin stride apart, into a strip; cases is a multiple of eight.
    void (*interleave)(const double* columns, std::ptrdiff_t stride, int cases, double* strip) noexcept;

    // One tile of all strips enters the running moments, before cases having gone before. means and sums hold eight
    // numbers for each strip.
    void (*update_means)(const double* tile, int strips, int cases, double before, double* means) noexcept;
    void (*update_sums)(const double* tile, int strips, int cases, double before, double* means, double* sums) noexcept;
    // The tile receives the deviations from the means that were, after those from the means that are then.
    void (*deviations)(double* tile, int strips, int cases, double before, double* means, double* after) noexcept;

    // Adds left(i) * right(j), j <= i, to the blocks of eight by eight that lie in the lower triangle, row by row.
    void (*add_products)(const double* left, const double* right, int variables, int cases, double* blocks) noexcept;
};

extern const MomentKernels s_moments_baseline, s_moments_avx2, s_moments_avx512;
inline constexpr platform::KernelSets<MomentKernels> s_moment_kernels = QMML_KERNEL_SETS(s_moments);

} // namespace qmml::matrix
