// What the kernels report; the raw entry points hand the numbers on. Matrices are column-major, without gaps.
#pragma once

namespace qmml::matrix {

enum class Status : int {
    success = 0,
    singular = 1, // or not of full rank, not positive definite; no convergence of the symmetric eigenproblem
    out_of_memory = 2,
    invalid_pivots = 2, // of the sweep: range or direction
    out_of_range = 3,   // the determinant
    no_variance = 3,    // the correlations
    not_converged = 4,  // the singular values
    stopped = 99,       // by the break check
};

} // namespace qmml::matrix
