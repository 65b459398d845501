// Sweep operator, Cholesky factor, Gram-Schmidt orthonormalisation.
#pragma once

#include "matrix/status.h"

namespace qmml::matrix {

// Sweeps the symmetric a on the pivots first..last (from 0), direction 1 forward, -1 in reverse. Only the lower
// triangle is read; the result is symmetric. A failure leaves the pivots before it swept and the upper triangle as it
// was.
Status sweep(double* a, int n, int first, int last, int direction) noexcept;

// a = U'U; a becomes U, with zeros below its diagonal.
Status cholesky_in_place(double* a, int n) noexcept;

// Modified Gram-Schmidt on the columns.
Status orthonormalise_in_place(double* a, int rows, int cols) noexcept;

} // namespace qmml::matrix
