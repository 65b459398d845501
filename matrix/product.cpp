#include "matrix/product.h"

#include "core/break_check.h"
#include "matrix/product_kernels.h"

#include <algorithm>
#include <cstdint>

namespace qmml::matrix {

Status multiply(double* c, int c_rows, int c_cols, const double* a, int a_rows, int a_cols, const double* b, int b_rows,
                int b_cols) noexcept
{
    if (a_cols != b_rows || a_rows != c_rows || b_cols != c_cols)
        return Status::singular;
    if (c_rows < 1 || c_cols < 1)
        return Status::success;
    if (a_cols < 1) {
        std::fill_n(c, std::int64_t{c_rows} * c_cols, 0.0);
        return Status::success;
    }
    const ProductKernels& kernels = *s_product_kernels;
    for (std::ptrdiff_t j = 0; j < c_cols; j += s_product_columns) {
        if (break_requested())
            return Status::stopped;
        const int cols = static_cast<int>(std::min<std::ptrdiff_t>(c_cols - j, s_product_columns));
        kernels.assign({c + j * c_rows, c_rows}, {a, a_rows}, {b + j * b_rows, b_rows}, c_rows, cols, a_cols);
    }
    return Status::success;
}

} // namespace qmml::matrix
