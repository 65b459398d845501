// Included by one source per instruction set: nothing in here may be instantiated for a type that two of them share.
#pragma once

#include "matrix/tridiagonal_kernels.h"

#include <cmath>

namespace qmml::matrix {

// Tile: registers of rows by columns of a product that stay in registers. Symmetric: columns of a symmetric matrix that
// are gone through at once.
template <class L, int TileRows, int TileColumns, int Symmetric>
struct TridiagonalOperations {
    using D = typename L::D;

    struct Eight {
        D part[8 / L::width];

        Eight() noexcept
        {
            for (D& p : part)
                p = L::set(0.0);
        }
        double sum() const noexcept
        {
            double s[8];
            for (int k = 0; k < 8 / L::width; ++k)
                L::store(s + k * L::width, part[k]);
            return ((s[0] + s[4]) + (s[2] + s[6])) + ((s[1] + s[5]) + (s[3] + s[7]));
        }
    };

    static double sum_of_magnitudes(const double* x, int rows) noexcept
    {
        const D zero = L::set(0.0);
        Eight sum;
        for (int i = 0; i < rows; i += 8)
            for (int k = 0; k < 8 / L::width; ++k) {
                const D v = L::load(x + i + k * L::width);
                sum.part[k] = sum.part[k] + L::select(L::less(v, zero), zero - v, v);
            }
        return sum.sum();
    }

    static double dot(const double* x, const double* y, int rows) noexcept
    {
        Eight sum;
        for (int i = 0; i < rows; i += 8)
            for (int k = 0; k < 8 / L::width; ++k)
                sum.part[k] = sum.part[k] + L::load(x + i + k * L::width) * L::load(y + i + k * L::width);
        return sum.sum();
    }

    static void divide(double* x, double divisor, int rows) noexcept
    {
        const D by = L::set(divisor);
        for (int i = 0; i < rows; i += L::width)
            L::store(x + i, L::load(x + i) / by);
    }

    static void subtract(double* y, const double* x, int rows) noexcept
    {
        for (int i = 0; i < rows; i += L::width)
            L::store(y + i, L::load(y + i) - L::load(x + i));
    }

    static Reflection reflect(double* u, int count, double scale) noexcept
    {
        const int rows = (count + 7) & ~7;
        divide(u, scale, rows);
        const double h = dot(u, u, rows), f = u[count - 1];
        const double g = f >= 0 ? -std::sqrt(h) : std::sqrt(h);
        u[count - 1] = f - g;
        return {.off_diagonal = scale * g, .h = h - f * g};
    }

    static void correct(double* w, const double* u, int count, double h) noexcept
    {
        const int rows = (count + 7) & ~7;
        divide(w, h, rows);
        for (int i = count; i < rows; ++i)
            w[i] = 0;
        const D factor = L::set(dot(u, w, rows) / (2 * h));
        for (int i = 0; i < rows; i += L::width)
            L::store(w + i, L::load(w + i) - factor * L::load(u + i));
    }

    template <int V>
    static void multiply_rows(double* y, const double* a, std::ptrdiff_t ld, int columns, const double* x) noexcept
    {
        D sum[V];
        for (int v = 0; v < V; ++v)
            sum[v] = L::set(0.0);
        for (int j = 0; j < columns; ++j) {
            const D factor = L::set(x[j]);
            for (int v = 0; v < V; ++v)
                sum[v] = sum[v] + L::load(a + j * ld + v * L::width) * factor;
        }
        for (int v = 0; v < V; ++v)
            L::store(y + v * L::width, sum[v]);
    }

    static void multiply(double* y, const double* a, std::ptrdiff_t ld, int rows, int columns, const double* x) noexcept
    {
        int i = 0;
        for (; rows - i >= 8 * L::width; i += 8 * L::width)
            multiply_rows<8>(y + i, a + i, ld, columns, x);
        for (; rows - i >= 4 * L::width; i += 4 * L::width)
            multiply_rows<4>(y + i, a + i, ld, columns, x);
        for (; i < rows; i += L::width)
            multiply_rows<1>(y + i, a + i, ld, columns, x);
    }

    static void update(double* a, std::ptrdiff_t ld, int rows, int columns, const double* u, const double* w) noexcept
    {
        for (int j = 0; j < columns; ++j) {
            double* const column = a + j * ld;
            const D uj = L::set(u[j]), wj = L::set(w[j]);
            for (int i = 0; i < rows; i += L::width)
                L::store(column + i, L::load(column + i) - (L::load(u + i) * wj + L::load(w + i) * uj));
        }
    }

    static void accumulate(double* q, std::ptrdiff_t ld, int rows, int columns, const double* u, double h,
                           double* product) noexcept
    {
        multiply(product, q, ld, rows, columns, u);
        divide(product, h, rows);
        for (int j = 0; j < columns; ++j) {
            double* const column = q + j * ld;
            const D uj = L::set(u[j]);
            for (int i = 0; i < rows; i += L::width)
                L::store(column + i, L::load(column + i) - L::load(product + i) * uj);
        }
    }

    // Some columns of the rows above their block of eight: their part of the sums of these rows, and of their own.
    static void above_diagonal(double* y, const double* a, std::ptrdiff_t ld, int rows, const double* x,
                               const double* own_x, double* own_y) noexcept
    {
        Eight sum[Symmetric];
        D factor[Symmetric];
        for (int j = 0; j < Symmetric; ++j)
            factor[j] = L::set(own_x[j]);
        for (int i = 0; i < rows; i += 8)
            for (int k = 0; k < 8 / L::width; ++k) {
                const int row = i + k * L::width;
                const D xi = L::load(x + row);
                D yi = L::load(y + row);
                for (int j = 0; j < Symmetric; ++j) {
                    const D element = L::load(a + j * ld + row);
                    yi = yi + element * factor[j];
                    sum[j].part[k] = sum[j].part[k] + element * xi;
                }
                L::store(y + row, yi);
            }
        for (int j = 0; j < Symmetric; ++j)
            own_y[j] = sum[j].sum();
    }

    static void multiply_symmetric(double* y, const double* a, std::ptrdiff_t ld, int rows, const double* x) noexcept
    {
        double diagonal[8];
        for (int j = 0; j < rows; j += 8) {
            for (int c = 0; c < 8; c += Symmetric)
                above_diagonal(y, a + (j + c) * ld, ld, j, x, x + j + c, y + j + c);
            multiply(diagonal, a + j * ld + j, ld, 8, 8, x + j);
            for (int c = 0; c < 8; c += L::width)
                L::store(y + j + c, L::load(y + j + c) + L::load(diagonal + c));
        }
    }

    template <int V>
    static void subtract_tile(double* c, std::ptrdiff_t ldc, const double* a, std::ptrdiff_t lda, const double* b,
                              std::ptrdiff_t ldb, int depth) noexcept
    {
        D tile[TileColumns][V];
        for (int j = 0; j < TileColumns; ++j)
            for (int v = 0; v < V; ++v)
                tile[j][v] = L::load(c + j * ldc + v * L::width);
        for (int k = 0; k < depth; ++k) {
            D left[V];
            for (int v = 0; v < V; ++v)
                left[v] = L::load(a + k * lda + v * L::width);
            for (int j = 0; j < TileColumns; ++j) {
                const D right = L::set(b[k + j * ldb]);
                for (int v = 0; v < V; ++v)
                    tile[j][v] = tile[j][v] - left[v] * right;
            }
        }
        for (int j = 0; j < TileColumns; ++j)
            for (int v = 0; v < V; ++v)
                L::store(c + j * ldc + v * L::width, tile[j][v]);
    }

    static void subtract_product(double* c, std::ptrdiff_t ldc, int rows, int columns, const double* a,
                                 std::ptrdiff_t lda, const double* b, std::ptrdiff_t ldb, int depth) noexcept
    {
        for (int j = 0; j < columns; j += TileColumns) {
            double* const column = c + j * ldc;
            int i = 0;
            for (; rows - i >= TileRows * L::width; i += TileRows * L::width)
                subtract_tile<TileRows>(column + i, ldc, a + i, lda, b + j * ldb, ldb, depth);
            for (; i < rows; i += L::width)
                subtract_tile<1>(column + i, ldc, a + i, lda, b + j * ldb, ldb, depth);
        }
    }

    static void rotate(double* z, std::ptrdiff_t ld, int rows, int first, int last, const double* cosines,
                       const double* sines) noexcept
    {
        for (int row = 0; row < rows; row += L::width) {
            double* const strip = z + row;
            D right = L::load(strip + (last + 1) * ld);
            for (int i = last; i >= first; --i) {
                const D left = L::load(strip + i * ld), cosine = L::set(cosines[i]), sine = L::set(sines[i]);
                L::store(strip + (i + 1) * ld, sine * left + cosine * right);
                right = cosine * left - sine * right;
            }
            L::store(strip + first * ld, right);
        }
    }

    static constexpr TridiagonalKernels table()
    {
        return {.sum_of_magnitudes = sum_of_magnitudes,
                .reflect = reflect,
                .correct = correct,
                .update = update,
                .accumulate = accumulate,
                .multiply = multiply,
                .subtract = subtract,
                .multiply_symmetric = multiply_symmetric,
                .subtract_product = subtract_product,
                .rotate = rotate};
    }
};

} // namespace qmml::matrix
