// The tile that factors, sweeps and cross products share: sums of products in registers. Included by sources that are
// compiled for one instruction set each.
#pragma once

#include <cstddef>

namespace qmml::matrix {

enum class Term { added, subtracted };

// Rows of a tile are stride apart, and so are its vectors.
struct TileLayout {
    std::ptrdiff_t row, vector;
};

// c(r, lanes) += or -= left(k, r) * right(k, lanes), for R rows and V vectors of lanes; k ascending, product and sum
// rounded apart. A step of k is left_step and right_step long.
template <class L, Term T, int R, int V>
void update_tile(double* c, TileLayout layout, const double* left, std::ptrdiff_t left_step, const double* right,
                 std::ptrdiff_t right_step, std::ptrdiff_t right_vector, std::ptrdiff_t count) noexcept
{
    using D = typename L::D;
    D sums[R][V];
#pragma GCC unroll 8
    for (int r = 0; r < R; ++r)
#pragma GCC unroll 8
        for (int v = 0; v < V; ++v)
            sums[r][v] = L::load(c + r * layout.row + v * layout.vector);
    for (std::ptrdiff_t k = 0; k < count; ++k) {
        D lanes[V];
#pragma GCC unroll 8
        for (int v = 0; v < V; ++v)
            lanes[v] = L::load(right + v * right_vector);
#pragma GCC unroll 8
        for (int r = 0; r < R; ++r) {
            const D factor = L::set(left[r]);
#pragma GCC unroll 8
            for (int v = 0; v < V; ++v)
                sums[r][v] = T == Term::added ? sums[r][v] + factor * lanes[v] : sums[r][v] - factor * lanes[v];
        }
        left += left_step;
        right += right_step;
    }
#pragma GCC unroll 8
    for (int r = 0; r < R; ++r)
#pragma GCC unroll 8
        for (int v = 0; v < V; ++v)
            L::store(c + r * layout.row + v * layout.vector, sums[r][v]);
}

} // namespace qmml::matrix
