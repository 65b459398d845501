#include "matrix/bidiagonal_form.h"

#include "core/break_check.h"
#include "core/missing.h"

#include <algorithm>
#include <bit>
#include <cstdint>
#include <cstring>

namespace qmml::matrix {

// Products of elements with elements then stay in range. A power of two costs no digits.
static void set_scale(Reduction& reduction) noexcept
{
    constexpr std::uint64_t exponents = 0x7ff, last_inverse = 2045;
    constexpr int fraction_bits = 52;
    std::uint64_t largest = 0;
    for (int k = 0; k < reduction.cols; ++k) {
        const double* const column = reduction.a + k * reduction.stride;
        for (int i = 0; i < reduction.rows; ++i)
            largest = std::max(largest, bits_of(column[i]) << 1);
    }
    const std::uint64_t exponent =
        std::clamp<std::uint64_t>((largest >> (fraction_bits + 1)) & exponents, 1, last_inverse);
    reduction.scale = std::bit_cast<double>((last_inverse + 1 - exponent) << fraction_bits);
    reduction.unscale = std::bit_cast<double>(exponent << fraction_bits);
}

Status reduce_to_bidiagonal(Reduction& reduction) noexcept
{
    set_scale(reduction);
    const BidiagonalKernels& kernels = *s_bidiagonal_kernels;
    for (int k = 0; k < reduction.cols; ++k) {
        if (break_requested())
            return Status::stopped;
        kernels.reduce_column(reduction, k);
    }
    return Status::success;
}

// A column needs the reflectors of its own number and below only: from the last column to the first, none is
// overwritten too early.
Status multiply_out(const Reflectors& reflectors, double* to, std::ptrdiff_t stride, int cols, double* tile) noexcept
{
    const BidiagonalKernels& kernels = *s_bidiagonal_kernels;
    const std::size_t column_size = sizeof(double) * static_cast<std::size_t>(reflectors.rows);
    for (int first = (cols - 1) / s_tile * s_tile; first >= 0; first -= s_tile) {
        if (break_requested())
            return Status::stopped;
        std::memset(tile, 0, s_tile * column_size);
        kernels.multiply_out(reflectors, first, tile);
        for (int c = 0; c < std::min(s_tile, cols - first); ++c)
            std::memcpy(to + (first + c) * stride, tile + c * static_cast<std::ptrdiff_t>(reflectors.rows),
                        column_size);
    }
    return Status::success;
}

} // namespace qmml::matrix
