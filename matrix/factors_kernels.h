// Inner loops of the Cholesky factor and of the sweep, one set per instruction set. All sets give the same bits.
//
// Both keep their working values in strips of sixteen lanes: a strip's rows follow each other, sixteen numbers each.
#pragma once

#include "platform/levels.h"

#include <cstddef>

namespace qmml::matrix {

inline constexpr int s_lanes = 16;
inline constexpr int s_tile_rows = 8;

// What a pivot's row and column do to the rest: a(i, j) -= left(j) * right(i), i >= j.
struct PivotFactors {
    double* left;
    double* right;
};

struct FactorKernels {
    // to(r, c) = from(c, r): the c-th of cols runs of rows numbers each becomes the c-th number of every run.
    void (*transpose)(double* to, std::ptrdiff_t to_stride, const double* from, std::ptrdiff_t from_stride, int rows,
                      int cols) noexcept;

    // Eight rows, row_stride apart, of sixteen lanes: c(r, lane) -= left(k, r) * right(k, lane), k ascending.
    void (*subtract_products)(double* c, std::ptrdiff_t row_stride, const double* left, const double* right,
                              std::ptrdiff_t count) noexcept;

    // Rows of a strip, eight of them: U of the triangle's columns carries on to the right. lanes is 8 or 16.
    void (*solve)(double* rows, const double* triangle, int lanes) noexcept;

    // One pivot of a symmetric block of n <= stride columns, of which the lower triangle counts. stride is a multiple
    // of eight; so many numbers go into the factors.
    void (*sweep_pivot)(double* block, int stride, int n, int pivot, int direction, PivotFactors factors) noexcept;

    // The same pivots on a strip of rows off the block, all above or all below it. of_block holds a run of stride
    // numbers for each pivot, of_strip one of sixteen.
    void (*sweep_strip)(double* strip, bool below, const double* pivots, int count, int direction,
                        PivotFactors of_block, int stride, PivotFactors of_strip) noexcept;
};

extern const FactorKernels s_factors_baseline, s_factors_avx2, s_factors_avx512;
inline constexpr platform::KernelSets<FactorKernels> s_factor_kernels = QMML_KERNEL_SETS(s_factors);

} // namespace qmml::matrix
