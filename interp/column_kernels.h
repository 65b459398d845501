// Operations of the formula language over blocks of cases, one set per instruction set. All sets give the same bits.
#pragma once

#include <span>

namespace qmml::interp {

inline constexpr int s_block = 512; // a few of these stay in the first-level cache

// Block kernels work on a multiple of eight cases. An operand that is the same for every case is a pointer to one
// number.
using UnaryKernel = void (*)(double* out, const double* a, int n) noexcept;
using BinaryKernel = void (*)(double* out, const double* a, const double* b, int n) noexcept;
using NormalKernel = void (*)(double* out, const double* x, double mu, double sigma, int n) noexcept;

struct BinaryKernels {
    BinaryKernel both, left, right; // which operands vary
};

struct OperationKernels {
    BinaryKernels add, subtract, multiply, divide;
    BinaryKernels equal, not_equal, greater, greater_equal, less, less_equal;
    BinaryKernels logical_and, logical_or, truth_and, truth_or, minimum, maximum;
    UnaryKernel logical_not, minus, absolute, sign, truncate, square_root, square;
    UnaryKernel exponential, logarithm, sine, cosine, copy;
    NormalKernel normal, lower_normal; // sigma not zero, both parameters finite
};

struct ColumnKernels {
    const char* name;
    bool (*supported)() noexcept;
    OperationKernels intermediate;
    OperationKernels last;     // make the formula's value of the result: what is infinite or denormal becomes missing
    OperationKernels streamed; // the same, to a cache line's start, past the caches
};

extern const ColumnKernels s_baseline_kernels, s_avx2_kernels, s_avx512_kernels;

// Best first; the last one runs everywhere.
std::span<const ColumnKernels* const> column_kernel_variants() noexcept;

// The best supported set, or the one that a test has chosen.
const ColumnKernels& column_kernels() noexcept;
void choose_column_kernels(const ColumnKernels* kernels) noexcept; // null: the best

} // namespace qmml::interp
