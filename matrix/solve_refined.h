// A right-hand side solved with the factors and refined, for whatever does the single steps.
#pragma once

#include "core/compare.h"

#include <algorithm>
#include <cmath>

namespace qmml::matrix {

// Steps offers substitute(x), which turns a right-hand side into the solution, and residual(r, x, b), r = a x - b.
// The largest correction relative to the solution.
template <class Steps>
double refine(const Steps& steps, int n, double* x, const double* b, double* correction) noexcept
{
    steps.residual(correction, x, b);
    steps.substitute(correction);
    double largest = 0;
    for (int i = 0; i < n; ++i) {
        x[i] -= correction[i];
        if (is_greater(std::fabs(x[i]), 0.0))
            largest = std::max(largest, std::fabs(correction[i] / x[i])); // passes over a NaN
    }
    return largest;
}

// x holds the right-hand side; b and correction are work.
template <class Steps>
void solve_refined(const Steps& steps, int n, double* x, double* b, double* correction) noexcept
{
    std::copy_n(x, n, b);
    steps.substitute(x);
    if (refine(steps, n, x, b, correction) > 1e-14)
        refine(steps, n, x, b, correction);
}

} // namespace qmml::matrix
