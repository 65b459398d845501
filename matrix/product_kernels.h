// The product's inner kernels, one set per instruction set. All sets give the same bits.
#pragma once

#include "platform/levels.h"

#include <cstddef>

namespace qmml::matrix {

// Part of a column-major matrix: the distance between its columns may exceed its rows.
struct Part {
    double* data;
    std::ptrdiff_t stride;
};
struct ConstPart {
    const double* data;
    std::ptrdiff_t stride;
};

// c is rows x cols, a rows x depth, b depth x cols; no count is below 1.
using ProductKernel = void (*)(Part c, ConstPart a, ConstPart b, int rows, int cols, int depth) noexcept;

struct ProductKernels {
    ProductKernel assign;   // c = 0 + a b, each element's terms added with k ascending
    ProductKernel subtract; // c -= a b, each element's terms subtracted with k ascending
};

// Wide enough to use what is packed often, narrow enough for what is read of b to stay in the second-level cache.
inline constexpr int s_product_columns = 256;

extern const ProductKernels s_product_baseline, s_product_avx2, s_product_avx512;
inline constexpr platform::KernelSets<ProductKernels> s_product_kernels = QMML_KERNEL_SETS(s_product);

} // namespace qmml::matrix
