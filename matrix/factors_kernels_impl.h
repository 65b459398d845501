// The factors' inner loops as templates over lanes. Included by one source per instruction set, each compiled for it:
// nothing in here may be instantiated for a type that two of those sources share.
#pragma once

#include "matrix/factors_kernels.h"
#include "matrix/factors_tile.h"

namespace qmml::matrix {

template <class L>
struct FactorLoops {
    using D = typename L::D;

    static void transpose(double* to, std::ptrdiff_t to_stride, const double* from, std::ptrdiff_t from_stride,
                          int rows, int cols) noexcept
    {
        constexpr int w = L::width;
        const int whole_rows = rows / w * w, whole_cols = cols / w * w;
        for (int r = 0; r < whole_rows; r += w)
            for (int c = 0; c < whole_cols; c += w) {
                D square[w];
#pragma GCC unroll 8
                for (int i = 0; i < w; ++i)
                    square[i] = L::load(from + (c + i) * from_stride + r);
                L::transpose(square);
#pragma GCC unroll 8
                for (int i = 0; i < w; ++i)
                    L::store(to + (r + i) * to_stride + c, square[i]);
            }
        for (int c = 0; c < cols; ++c)
            for (int r = c < whole_cols ? whole_rows : 0; r < rows; ++r)
                to[r * to_stride + c] = from[c * from_stride + r];
    }

    static void subtract_products(double* c, std::ptrdiff_t row_stride, const double* left, const double* right,
                                  std::ptrdiff_t count) noexcept
    {
        constexpr int rows = L::width == 8 ? 8 : 4; // all registers hold sums
        for (int r = 0; r < s_tile_rows; r += rows)
            for (int lane = 0; lane < s_lanes; lane += 2 * L::width)
                update_tile<L, Term::subtracted, rows, 2>(c + r * row_stride + lane, {row_stride, L::width}, left + r,
                                                          s_lanes, right + lane, s_lanes, L::width, count);
    }

    static void solve(double* rows, const double* triangle, int lanes) noexcept
    {
        for (int lane = 0; lane < lanes; lane += L::width) {
            D row[s_tile_rows];
#pragma GCC unroll 8
            for (std::ptrdiff_t i = 0; i < s_tile_rows; ++i) {
                row[i] = L::load(rows + i * s_lanes + lane);
#pragma GCC unroll 8
                for (std::ptrdiff_t k = 0; k < i; ++k)
                    row[i] = row[i] - L::set(triangle[k * s_lanes + i]) * row[k];
                row[i] = row[i] / L::set(triangle[i * s_lanes + i]);
                L::store(rows + i * s_lanes + lane, row[i]);
            }
        }
    }

    static void sweep_pivot(double* block, int stride, int n, int pivot, int direction, PivotFactors factors) noexcept
    {
        double* column = block + static_cast<std::ptrdiff_t>(pivot) * stride;
        const double p = column[pivot];
        const D lanes_of_p = L::set(p), negated = L::set(-1.0 / p);

        for (int i = 0; i < pivot; ++i)
            column[i] = block[static_cast<std::ptrdiff_t>(i) * stride + pivot]; // nobody reads the upper triangle
        for (int i = 0; i < n; i += L::width) {
            const Step step(L::load(column + i), lanes_of_p, negated, direction);
            L::store(factors.left + i, step.left);
            L::store(factors.right + i, step.right);
            L::store(column + i, step.value);
        }
        for (int j = 0; j < n; ++j) {
            if (j == pivot)
                continue;
            const D left = L::set(factors.left[j]);
            double* other = block + static_cast<std::ptrdiff_t>(j) * stride;
            for (int i = j / L::width * L::width; i < n; i += L::width)
                L::store(other + i, L::load(other + i) - left * L::load(factors.right + i));
        }
        for (int i = 0; i < pivot; ++i)
            block[static_cast<std::ptrdiff_t>(i) * stride + pivot] = column[i];
        column[pivot] = -1.0 / p;
    }

    static void sweep_strip(double* strip, bool below, const double* pivots, int count, int direction,
                            PivotFactors of_block, int stride, PivotFactors of_strip) noexcept
    {
        for (std::ptrdiff_t k = 0; k < count; ++k) {
            const D p = L::set(pivots[k]), negated = L::set(-1.0 / pivots[k]);
            const double* others = (below ? of_block.left : of_block.right) + k * stride;
            for (int lane = 0; lane < s_lanes; lane += 2 * L::width) {
                double* row = strip + k * s_lanes + lane;
                const Step first(L::load(row), p, negated, direction);
                const Step second(L::load(row + L::width), p, negated, direction);
                put(of_strip.left + k * s_lanes + lane, first.left, second.left);
                put(of_strip.right + k * s_lanes + lane, first.right, second.right);
                const D own_first = below ? first.right : first.left, own_second = below ? second.right : second.left;
                for (std::ptrdiff_t other = 0; other < count; ++other) {
                    double* target = strip + other * s_lanes + lane;
                    const D factor = L::set(others[other]);
                    put(target, L::load(target) - factor * own_first, L::load(target + L::width) - factor * own_second);
                }
                put(row, first.value, second.value);
            }
        }
    }

private:
    // What a pivot makes of an element of its column, and of the two factors that its row and column give. In reverse,
    // a(i, j) += r(j) * (r(i) / d) with the scaled r = a(i, k) * d, d = -1/p.
    struct Step {
        Step(D element, D p, D negated, int direction) noexcept
        {
            if (direction > 0) {
                left = element;
                value = right = element / p;
            } else {
                value = element * negated;
                right = value / negated;
                left = L::as_number(L::as_bits(value) ^ L::bits(0x8000000000000000u));
            }
        }

        D left, right, value;
    };

    static void put(double* out, D first, D second) noexcept
    {
        L::store(out, first);
        L::store(out + L::width, second);
    }
};

template <class L>
constexpr FactorKernels factor_kernels_of() noexcept
{
    using Loops = FactorLoops<L>;
    return {Loops::transpose, Loops::subtract_products, Loops::solve, Loops::sweep_pivot, Loops::sweep_strip};
}

} // namespace qmml::matrix
