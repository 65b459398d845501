// The parts of the solver that work on whole columns, one set per instruction set. All sets give the same bits.
#pragma once

#include "matrix/product_kernels.h"
#include "matrix/status.h"
#include "platform/levels.h"

namespace qmml::matrix {

inline constexpr int s_panel = 8;        // columns factored together, and the order of the triangles solved directly
inline constexpr int s_stack_order = 16; // orders up to this one need no memory block

struct SolveKernels {
    // The copy, and the largest magnitude of each row by the tolerant comparison; NaNs are passed over.
    void (*copy_and_measure)(double* copy, double* row_maxima, const double* a, int n) noexcept;

    // Factors at most s_panel columns of at least as many rows; scale and pivots go with the rows, counted from the
    // panel's first.
    void (*factor_panel)(Part a, int rows, int cols, double* scale, int* pivots) noexcept;

    // b = l^-1 b for a unit lower triangle l of s_panel rows.
    void (*solve_lower)(ConstPart l, Part b, int cols) noexcept;

    // x becomes the solution of L U x = x, the exchanges being done.
    void (*substitute)(const double* factors, int n, double* x) noexcept;

    // r = a x - b, each sum starting at -b and taking its terms with k ascending.
    void (*residual)(double* r, const double* a, int n, const double* x, const double* b) noexcept;

    // All of solve_in_place for 1 <= n <= s_stack_order.
    Status (*solve_on_stack)(double* a, double* b, int n, int m) noexcept;
};

extern const SolveKernels s_solve_baseline, s_solve_avx2, s_solve_avx512;
inline constexpr platform::KernelSets<SolveKernels> s_solve_kernels = QMML_KERNEL_SETS(s_solve);

} // namespace qmml::matrix
