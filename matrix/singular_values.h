// Singular value decomposition, and what is derived from it. Values below the absolute threshold 1e-14 count as zero.
#pragma once

#include "matrix/status.h"

namespace qmml::matrix {

// u (m x n) = U diag(w) V', u becoming U; w descending, v n x n.
Status singular_value_decompose(double* u, int m, int n, double* w, double* v) noexcept;

// The c singular values of the r x c matrix a, descending.
Status singular_values(const double* a, int r, int c, double* w) noexcept;

Status matrix_rank(const double* a, int r, int c, double& rank) noexcept;

// The c x r pseudo-inverse.
Status pseudo_inverse(const double* a, int r, int c, double* result) noexcept;

} // namespace qmml::matrix
