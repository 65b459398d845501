#pragma once

#include "matrix/status.h"

namespace qmml::matrix {

// Eigenvalues in descending order and their unit vectors, column by column, of the symmetric n x n matrix a;
// positive_count is how many eigenvalues are greater than zero, 0 on failure.
Status eigen_symmetric(const double* a, int n, double* values, double* vectors, int& positive_count) noexcept;

} // namespace qmml::matrix
