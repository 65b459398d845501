// Vector work of the reduction to tridiagonal form, one set per instruction set. All sets give the same bits.
// Counts of rows are multiples of eight: matrices and vectors are padded. Sums over rows are eight partial sums, of the
// rows that are equal modulo eight, then those pairwise.
#pragma once

#include "platform/levels.h"

#include <cstddef>

namespace qmml::matrix {

// A reflection I - u u' / h that annihilates all but the last element of a vector.
struct Reflection {
    double off_diagonal; // what that element becomes
    double h;            // 0: there is nothing to reflect
};

struct TridiagonalKernels {
    double (*sum_of_magnitudes)(const double* x, int rows) noexcept;
    // u stands in for the vector, count elements and zeros behind them; scale is the sum of their magnitudes.
    Reflection (*reflect)(double* u, int count, double scale) noexcept;
    // Makes w, padded with zeros, of a u, count elements: the reflected a is a - u w' - w u'.
    void (*correct)(double* w, const double* u, int count, double h) noexcept;
    // a -= u w' + w u'
    void (*update)(double* a, std::ptrdiff_t ld, int rows, int columns, const double* u, const double* w) noexcept;
    // q = q (I - u u' / h); product has room for a column
    void (*accumulate)(double* q, std::ptrdiff_t ld, int rows, int columns, const double* u, double h,
                       double* product) noexcept;
    // y = a x, a of columns columns; y -= x
    void (*multiply)(double* y, const double* a, std::ptrdiff_t ld, int rows, int columns, const double* x) noexcept;
    void (*subtract)(double* y, const double* x, int rows) noexcept;
    // y = a x for the symmetric a of which the blocks on and above the diagonal of blocks of eight are read.
    void (*multiply_symmetric)(double* y, const double* a, std::ptrdiff_t ld, int rows, const double* x) noexcept;
    // c -= a b, the columns of c being a multiple of eight too.
    void (*subtract_product)(double* c, std::ptrdiff_t ldc, int rows, int columns, const double* a, std::ptrdiff_t lda,
                             const double* b, std::ptrdiff_t ldb, int depth) noexcept;
    // One sweep downwards over the pairs first..last, applied as it stands.
    void (*rotate)(double* z, std::ptrdiff_t ld, int rows, int first, int last, const double* cosines,
                   const double* sines) noexcept;
};

extern const TridiagonalKernels s_tridiagonal_baseline, s_tridiagonal_avx2, s_tridiagonal_avx512;
inline constexpr platform::KernelSets<TridiagonalKernels> s_tridiagonal_kernels = QMML_KERNEL_SETS(s_tridiagonal);

} // namespace qmml::matrix
