// What the reduction to bidiagonal form spends its time in, one set of kernels per instruction set. Sums run in eight
// parts, whatever the width of the registers, so that all sets give the same bits.
#pragma once

#include "platform/levels.h"

#include <cstddef>

namespace qmml::matrix {

inline constexpr int s_parts = 8; // every count of rows here is a multiple of it, what is beyond the matrix being zero

// A matrix on its way to bidiagonal form. While column k is reduced, the columns behind it still lack the effect of
// step k - 1: column j has to be seen as
//     column j + left_before * left_factor[j] + right_before * right_factor[j]
// and is brought up to date on the one occasion when it passes through the first-level cache.
struct Reduction {
    double* a; // its column k becomes the k-th reflecting vector from the left
    std::ptrdiff_t stride;
    int rows, cols;
    int last_row;          // of the matrix itself
    double* diagonal;      // cols, as the next one
    double* super;         // super[k] stands above diagonal[k]
    double* left_inverse;  // cols: of the half squared lengths of the reflecting vectors, negative; 0: no reflection
    double* right_inverse; // cols
    double* right;         // the reflecting vectors from the right, number k at right + k * right_stride
    std::ptrdiff_t right_stride;

    // Work, zero at the start: of rows, and of cols made up to a multiple of s_parts.
    double *right_before, *product;
    double *left_factor, *right_factor, *pivot_row;
    double scale, unscale; // a power of two that brings the largest element near 1, and its inverse
};

// Reflectors that are to be multiplied out: number k has its first element in row k + offset.
struct Reflectors {
    const double* vectors;
    std::ptrdiff_t stride;
    const double* inverse;
    int count, rows, offset;
};

inline constexpr int s_tile = 4; // columns that are worked on together

// Columns x and y become c x + s y and c y - s x.
struct PlaneRotation {
    double c, s;
};

struct BidiagonalKernels {
    void (*reduce_column)(Reduction& r, int k) noexcept;
    // Columns first..first + s_tile - 1 of the product of the reflectors, into tile, which is zero at first.
    void (*multiply_out)(const Reflectors& reflectors, int first, double* tile) noexcept;
    // Rotates the pairs of columns (i, i + 1) of z, i ascending from first.
    void (*rotate_columns)(double* z, std::ptrdiff_t stride, int rows, int first, int count,
                           const PlaneRotation* rotations) noexcept;
    void (*rotate_columns_apart)(double* x, double* y, int rows, PlaneRotation rotation) noexcept;
};

extern const BidiagonalKernels s_bidiagonal_baseline, s_bidiagonal_avx2, s_bidiagonal_avx512;
inline constexpr platform::KernelSets<BidiagonalKernels> s_bidiagonal_kernels = QMML_KERNEL_SETS(s_bidiagonal);

} // namespace qmml::matrix
