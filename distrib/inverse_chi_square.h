// Inverse of the chi-square distribution.
#pragma once

#include "distrib/inverse_beta.h"

namespace qmml {

// x with P(X <= x) = p for df degrees of freedom. Fault: df < 0.01, p outside [0.000002, 0.999998], no convergence.
Quantile inverse_chi_square(double p, double df) noexcept;

} // namespace qmml
