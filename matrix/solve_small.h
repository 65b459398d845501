#pragma once

#include "matrix/status.h"

namespace qmml::matrix {

inline constexpr int s_small_order = 6;

// As solve_in_place, for 1 <= n <= s_small_order: with nothing but registers, where vectors would not pay. The same
// bits.
Status solve_small(double* a, double* b, int n, int m) noexcept;

} // namespace qmml::matrix
