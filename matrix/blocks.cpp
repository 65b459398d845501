#include "matrix/blocks.h"

#include <algorithm>
#include <cstring>

namespace qmml::matrix {

void copy_block(const double* from, std::int64_t from_stride, double* to, std::int64_t to_stride,
                Extent extent) noexcept
{
    if (extent.rows < 1 || extent.cols < 1)
        return;
    if (from_stride == extent.rows && to_stride == extent.rows)
        extent = {extent.rows * extent.cols, 1};
    const auto bytes = static_cast<std::size_t>(extent.rows) * sizeof(double);
    for (std::int64_t j = 0; j < extent.cols; ++j)
        std::memmove(to + j * to_stride, from + j * from_stride, bytes); // a caller's arrays may overlap
}

void fill_block(double* to, std::int64_t stride, Extent extent, double value) noexcept
{
    if (extent.rows < 1)
        return;
    for (std::int64_t j = 0; j < extent.cols; ++j)
        std::fill_n(to + j * stride, extent.rows, value);
}

void transpose(const double* from, double* to, Extent extent) noexcept
{
    constexpr std::int64_t tile = 16; // two cache lines each way
    for (std::int64_t j0 = 0; j0 < extent.cols; j0 += tile)
        for (std::int64_t i0 = 0; i0 < extent.rows; i0 += tile) {
            const std::int64_t j1 = std::min(j0 + tile, extent.cols), i1 = std::min(i0 + tile, extent.rows);
            for (std::int64_t i = i0; i < i1; ++i)
                for (std::int64_t j = j0; j < j1; ++j)
                    to[i * extent.cols + j] = from[j * extent.rows + i];
        }
}

void kronecker_product(const double* a, Extent a_extent, const double* b, Extent b_extent, double* c) noexcept
{
    for (std::int64_t ja = 0; ja < a_extent.cols; ++ja)
        for (std::int64_t jb = 0; jb < b_extent.cols; ++jb)
            for (std::int64_t ia = 0; ia < a_extent.rows; ++ia) {
                const double factor = a[ja * a_extent.rows + ia];
                const double* const column = b + jb * b_extent.rows;
                for (std::int64_t ib = 0; ib < b_extent.rows; ++ib)
                    *c++ = factor * column[ib];
            }
}

} // namespace qmml::matrix
