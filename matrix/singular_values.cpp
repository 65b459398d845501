#include "matrix/singular_values.h"

#include "core/break_check.h"
#include "core/compare.h"
#include "matrix/product_kernels.h"
#include "matrix/singular_values_work.h"

#include <algorithm>
#include <cstring>

namespace qmml::matrix {

static constexpr double s_threshold = 1e-14;

using Result = SingularValuesWork::Result;

static void copy_right(const SingularValuesWork& work, int c, double* v) noexcept
{
    for (int k = 0; k < c; ++k) {
        const double* const right = work.right(k);
        const double sign = work.right_sign(k);
        double* const column = v + static_cast<std::ptrdiff_t>(k) * c;
        for (int i = 0; i < c; ++i)
            column[i] = right[i] * sign;
    }
}

Status singular_value_decompose(double* u, int m, int n, double* w, double* v) noexcept
{
    if (n < 1)
        return Status::success;
    if (m < 1) {
        std::fill_n(w, n, 0.0);
        std::fill_n(v, static_cast<std::ptrdiff_t>(n) * n, 0.0);
        for (std::ptrdiff_t k = 0; k < n; ++k)
            v[k * n + k] = 1;
        return Status::success;
    }
    SingularValuesWork work(m, n, Result::vectors);
    const Status status = work.decompose(u);
    if (status != Status::success)
        return status;
    for (int k = 0; k < n; ++k) {
        w[k] = work.value(k);
        std::copy_n(work.left(k), m, u + static_cast<std::ptrdiff_t>(k) * m);
    }
    copy_right(work, n, v);
    return status;
}

Status singular_values(const double* a, int r, int c, double* w) noexcept
{
    if (c < 1)
        return Status::success;
    if (r < 1) {
        std::fill_n(w, c, 0.0);
        return Status::success;
    }
    SingularValuesWork work(r, c, Result::values);
    const Status status = work.decompose(a);
    if (status == Status::success)
        for (int k = 0; k < c; ++k)
            w[k] = work.value(k);
    return status;
}

Status matrix_rank(const double* a, int r, int c, double& rank) noexcept
{
    rank = 0;
    if (r < 1 || c < 1)
        return Status::success;
    SingularValuesWork work(r, c, Result::values);
    const Status status = work.decompose(a);
    if (status == Status::success)
        for (int k = 0; k < c; ++k)
            rank += is_greater(work.value(k), s_threshold) ? 1.0 : 0.0;
    return status;
}

// scaled (c x r) = the transposed left vectors, each divided by its singular value, negligible ones being left out.
static void scale_left(const SingularValuesWork& work, int r, int c, double* scaled) noexcept
{
    constexpr int together = 8; // columns, so that scaled is written by whole cache lines
    for (int first = 0; first < c; first += together) {
        const int count = std::min(together, c - first);
        const double* column[together] = {};
        double factor[together] = {};
        for (int j = 0; j < count; ++j) {
            const double value = work.value(first + j);
            column[j] = work.left(first + j);
            factor[j] = is_greater(value, s_threshold) ? 1 / value : 0.0;
        }
        for (std::ptrdiff_t k = 0; k < r; ++k)
            for (int j = 0; j < count; ++j)
                scaled[k * c + first + j] = factor[j] == 0.0 ? 0.0 : column[j][k] * factor[j];
    }
}

Status pseudo_inverse(const double* a, int r, int c, double* result) noexcept
{
    if (r < 1 || c < 1)
        return Status::success;
    SingularValuesWork work(r, c, Result::vectors);
    const Status status = work.decompose(a);
    if (status != Status::success)
        return status;
    constexpr std::ptrdiff_t small = 256;
    const std::ptrdiff_t size = static_cast<std::ptrdiff_t>(r) * c;
    double stack[small];
    Block<double> heap(size > small ? size : 0);
    if (!heap)
        return Status::out_of_memory;
    double* const scaled = size > small ? heap.data() : stack;
    scale_left(work, r, c, scaled);
    double* const v = work.left_room();
    copy_right(work, c, v);
    constexpr int columns = 64;
    for (std::ptrdiff_t k = 0; k < r; k += columns) {
        if (break_requested())
            return Status::stopped;
        const int count = static_cast<int>(std::min<std::ptrdiff_t>(columns, r - k));
        s_product_kernels->assign({result + k * c, c}, {v, c}, {scaled + k * c, c}, c, count, c);
    }
    return Status::success;
}

} // namespace qmml::matrix
