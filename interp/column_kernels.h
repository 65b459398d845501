// Operations of the formula language over blocks of cases, one set per instruction set. All sets give the same bits.
#pragma once

#include "platform/levels.h"

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
    OperationKernels intermediate;
    OperationKernels last;     // make the formula's value of the result: what is infinite or denormal becomes missing
    OperationKernels streamed; // the same, to a cache line's start, past the caches
};

extern const ColumnKernels s_column_baseline, s_column_avx2, s_column_avx512;
inline constexpr platform::KernelSets<ColumnKernels> s_column_kernels = QMML_KERNEL_SETS(s_column);

} // namespace qmml::interp
