// Elimination with full pivoting.
#pragma once

#include "matrix/status.h"

namespace qmml::matrix {

// The determinant of the n x n matrix a; on failure it is 0.
Status determinant(const double* a, int n, double& value) noexcept;

// On failure a is left partly reduced.
Status invert_in_place(double* a, int n) noexcept;

} // namespace qmml::matrix
