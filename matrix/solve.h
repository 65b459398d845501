#pragma once

#include "matrix/status.h"

namespace qmml::matrix {

// Solves a x = b for the m columns of b, which become the solutions; a becomes its LU factors.
Status solve_in_place(double* a, double* b, int n, int m) noexcept;

} // namespace qmml::matrix
