// The two stages of the symmetric eigenproblem. Work arrays are padded: rows to a multiple of eight, and z also
// columns; what the padding holds has no influence as long as it is finite, and vectors have it zero.
#pragma once

#include "matrix/status.h"
#include "matrix/tridiagonal_kernels.h"

#include <cstddef>

namespace qmml::matrix {

// Matrices up to this order take no memory from the heap.
inline constexpr int s_small_order = 16;

constexpr int padded(int n) noexcept
{
    return (n + 7) & ~7;
}

// Householder reductions a = q t q'. The diagonal of t becomes d, the off-diagonal e[1]..e[n - 1]. Rows are
// eliminated from the last up; each asks for a break.

// For small matrices: a stands full and is destroyed, q is made as a goes. work has room for two padded vectors.
Status reduce_directly(double* a, double* q, int n, std::ptrdiff_t ld, double* d, double* e, double* work) noexcept;

// For large ones: reads the upper triangle of z, with its diagonal blocks of eight full; z becomes q.
Status reduce_in_blocks(double* z, int n, std::ptrdiff_t ld, double* d, double* e) noexcept;

// QL with implicit shifts: d becomes the eigenvalues in no order, the columns of z, given as q, their vectors.
Status tridiagonal_ql(double* d, double* e, int n, double* z, std::ptrdiff_t ld) noexcept;

// Makes the reflection of the count elements at u, zeroing what pads them. Nothing is reflected where the sum of
// their magnitudes is as good as zero.
Reflection make_reflection(double* u, int count) noexcept;

} // namespace qmml::matrix
