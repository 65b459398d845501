// The product's kernels as templates over lanes. Included by one source per instruction set, each compiled for it:
// nothing in here may be instantiated for a type that two of those sources share.
#pragma once

#include "matrix/product_kernels.h"

namespace qmml::matrix {

// What the registers hold: accumulators for a tile of c, a column of a's tile, one number of b.
template <class L>
struct TileShape {
    static constexpr int vectors = L::width == 8 ? 3 : 2;
    static constexpr int cols = L::width == 8 ? 8 : 4;
    static constexpr int rows = vectors * L::width;
};

enum class Term { first, added, subtracted }; // first: added to zeros instead of to c

template <class L, Term T>
struct TileKernels {
    using D = typename L::D;
    using Shape = TileShape<L>;

    // V vectors of rows by C columns. The last vector holds last_rows rows, which counts when it may not be full.
    template <int V, int C, bool Full>
    static void tile(double* c, std::ptrdiff_t c_stride, const double* a, std::ptrdiff_t a_stride, const double* b,
                     std::ptrdiff_t b_stride, int depth, [[maybe_unused]] int last_rows) noexcept
    {
        const auto load = [&](const double* p, int v) {
            if constexpr (!Full)
                if (v == V - 1)
                    return L::load_first(p + v * L::width, last_rows);
            return L::load(p + v * L::width);
        };
        D sums[C][V];
#pragma GCC unroll 8
        for (int j = 0; j < C; ++j)
#pragma GCC unroll 8
            for (int v = 0; v < V; ++v)
                sums[j][v] = T == Term::first ? L::set(0.0) : load(c + j * c_stride, v);
        for (int k = 0; k < depth; ++k) {
            D column[V];
#pragma GCC unroll 8
            for (int v = 0; v < V; ++v)
                column[v] = load(a, v);
#pragma GCC unroll 8
            for (int j = 0; j < C; ++j) {
                const D factor = L::set(b[j * b_stride]);
#pragma GCC unroll 8
                for (int v = 0; v < V; ++v)
                    sums[j][v] =
                        T == Term::subtracted ? sums[j][v] - column[v] * factor : sums[j][v] + column[v] * factor;
            }
            a += a_stride;
            ++b;
        }
#pragma GCC unroll 8
        for (int j = 0; j < C; ++j)
#pragma GCC unroll 8
            for (int v = 0; v < V; ++v) {
                double* out = c + j * c_stride + v * L::width;
                if (!Full && v == V - 1)
                    L::store_first(out, sums[j][v], last_rows);
                else
                    L::store(out, sums[j][v]);
            }
    }

    template <int V, bool Full>
    static void row_of_tiles(Part c, ConstPart a, ConstPart b, int cols, int depth, int last_rows) noexcept
    {
        int j = 0;
        const auto run = [&]<int C>() {
            for (; j + C <= cols; j += C)
                tile<V, C, Full>(c.data + j * c.stride, c.stride, a.data, a.stride, b.data + j * b.stride, b.stride,
                                 depth, last_rows);
        };
        run.template operator()<Shape::cols>();
        if constexpr (Shape::cols > 4)
            run.template operator()<4>();
        run.template operator()<2>();
        run.template operator()<1>();
    }

    // At most as many rows as a tile has.
    static void tile_rows(Part c, ConstPart a, ConstPart b, int rows, int cols, int depth) noexcept
    {
        const int last_rows = (rows - 1) % L::width + 1;
        const bool full = last_rows == L::width;
        if (rows <= L::width)
            return full ? row_of_tiles<1, true>(c, a, b, cols, depth, last_rows)
                        : row_of_tiles<1, false>(c, a, b, cols, depth, last_rows);
        if (Shape::vectors == 2 || rows <= 2 * L::width)
            return full ? row_of_tiles<2, true>(c, a, b, cols, depth, last_rows)
                        : row_of_tiles<2, false>(c, a, b, cols, depth, last_rows);
        if constexpr (Shape::vectors > 2)
            return full ? row_of_tiles<3, true>(c, a, b, cols, depth, last_rows)
                        : row_of_tiles<3, false>(c, a, b, cols, depth, last_rows);
    }
};

template <class L>
struct ProductImplementation {
    using D = typename L::D;

    static constexpr int s_depth = L::width == 8 ? 256 : 128; // of one pass over c
    static constexpr int s_packed_rows = 24;                  // whole tiles
    static_assert(s_packed_rows % TileShape<L>::rows == 0);

    template <Term T>
    static void rows_of_tiles(Part c, ConstPart a, ConstPart b, int rows, int cols, int depth) noexcept
    {
        for (int i = 0; i < rows; i += TileShape<L>::rows) {
            const int count = rows - i < TileShape<L>::rows ? rows - i : TileShape<L>::rows;
            TileKernels<L, T>::tile_rows({c.data + i, c.stride}, {a.data + i, a.stride}, b, count, cols, depth);
        }
    }

    static void pack(double* packed, ConstPart a, int rows, int depth) noexcept
    {
        for (int k = 0; k < depth; ++k, packed += s_packed_rows, a.data += a.stride) {
            int i = 0;
            for (; i + L::width <= rows; i += L::width)
                L::store(packed + i, L::load(a.data + i));
            if (i < rows)
                L::store(packed + i, L::load_first(a.data + i, rows - i));
        }
    }

    // Strips of a go one after the other into the first-level cache, close together, and meet all columns of b there.
    template <Term T>
    static void pass(Part c, ConstPart a, ConstPart b, int rows, int cols, int depth) noexcept
    {
        alignas(64) double packed[s_packed_rows * s_depth];
        for (int i = 0; i < rows; i += s_packed_rows) {
            const int count = rows - i < s_packed_rows ? rows - i : s_packed_rows;
            pack(packed, {a.data + i, a.stride}, count, depth);
            rows_of_tiles<T>({c.data + i, c.stride}, {packed, s_packed_rows}, b, count, cols, depth);
        }
    }

    // Each element's terms in order: a pass takes up the sums where the one before it has left them.
    template <Term Start>
    static void product(Part c, ConstPart a, ConstPart b, int rows, int cols, int depth) noexcept
    {
        static constexpr Term s_further = Start == Term::first ? Term::added : Start;
        if (depth <= s_depth && (cols < 64 || a.stride <= 96))
            return rows_of_tiles<Start>(c, a, b, rows, cols, depth);
        for (int j = 0; j < cols; j += s_product_columns) {
            const int width = cols - j < s_product_columns ? cols - j : s_product_columns;
            const ConstPart right = {b.data + j * b.stride, b.stride};
            pass<Start>({c.data + j * c.stride, c.stride}, a, right, rows, width, depth < s_depth ? depth : s_depth);
            for (int k = s_depth; k < depth; k += s_depth)
                pass<s_further>({c.data + j * c.stride, c.stride}, {a.data + k * a.stride, a.stride},
                                {right.data + k, b.stride}, rows, width, depth - k < s_depth ? depth - k : s_depth);
        }
    }

    static constexpr ProductKernels kernels = {product<Term::first>, product<Term::subtracted>};
};

} // namespace qmml::matrix
