// Householder reduction to upper bidiagonal form, and the orthogonal matrices that go with it.
#pragma once

#include "matrix/bidiagonal_kernels.h"
#include "matrix/status.h"

namespace qmml::matrix {

// Everything but the vectors, diagonal, super and inverses is set; scale and unscale are set here.
Status reduce_to_bidiagonal(Reduction& reduction) noexcept;

// The first cols columns of the product of the reflectors, column k at to + k * stride. They may take the place of the
// reflecting vectors themselves. tile has room for s_tile columns of reflectors.rows.
Status multiply_out(const Reflectors& reflectors, double* to, std::ptrdiff_t stride, int cols, double* tile) noexcept;

} // namespace qmml::matrix
