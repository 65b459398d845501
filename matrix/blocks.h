// Blocks of column-major matrices: an address, a shape, and the distance between columns.
#pragma once

#include <cstdint>

namespace qmml::matrix {

struct Extent {
    std::int64_t rows, cols;
};

void copy_block(const double* from, std::int64_t from_stride, double* to, std::int64_t to_stride,
                Extent extent) noexcept;
void fill_block(double* to, std::int64_t stride, Extent extent, double value) noexcept;

// to (cols x rows) = from (rows x cols) transposed; they share no storage.
void transpose(const double* from, double* to, Extent extent) noexcept;

// c = a (x) b
void kronecker_product(const double* a, Extent a_extent, const double* b, Extent b_extent, double* c) noexcept;

} // namespace qmml::matrix
