// Included by one source per instruction set: nothing in here may be instantiated for a type that two of them share.
#pragma once

#include "matrix/rotations_kernels.h"
#include "platform/memory_hints.h"

namespace qmml::matrix {

// V registers of rows of each column.
template <class L, int V>
struct RotationStrip {
    using D = typename L::D;

    static void load(D (&column)[V], const double* z, std::ptrdiff_t stride, int k, int columns) noexcept
    {
        const bool inside = k >= 0 && k < columns;
        for (int v = 0; v < V; ++v)
            column[v] = inside ? L::load(z + k * stride + v * L::width) : L::set(0.0);
    }

    static void store(const D (&column)[V], double* z, std::ptrdiff_t stride, int k, int columns) noexcept
    {
        if (k >= 0 && k < columns)
            for (int v = 0; v < V; ++v)
                L::store(z + k * stride + v * L::width, column[v]);
    }

    template <bool General>
    static void apply(double* z, std::ptrdiff_t stride, int columns, const RotationStep* steps,
                      const RotationWeights* weights, int first_step, int last_step) noexcept
    {
        // The window holds the columns base + 1 .. base + s_window. A step takes in column base, rotates neighbours two
        // by two, so that no rotation waits for another, and moves on to the next base; the column that falls out has
        // met every sweep.
        constexpr int s_window = 2 * s_wave_depth - 1;
        constexpr int s_line = platform::s_cache_line / static_cast<int>(sizeof(double)), s_ahead = 16;
        D window[s_window][V], next[V];
        const int first_base = columns - 2 - first_step;
        for (int q = 0; q < s_window; ++q)
            load(window[q], z, stride, first_base + 1 + q, columns);
        for (int t = first_step; t <= last_step; ++t) {
            const int base = columns - 2 - t;
            load(next, z, stride, base, columns);
            for (int row = 0; row < V * L::width; row += s_line)
                platform::prefetch(z + (base - s_ahead) * stride + row);
            D done[V];
#pragma GCC unroll 8
            for (int p = s_wave_depth - 1; p >= 0; --p) {
                const D left = L::set(steps[t].coupling[p][0]), right = L::set(steps[t].coupling[p][1]);
                for (int v = 0; v < V; ++v) {
                    D x = p == 0 ? next[v] : window[2 * p - 1][v], y = window[2 * p][v];
                    const D from_y = left * y, from_x = right * x;
                    if constexpr (General) {
                        x = L::set(weights[t].weight[p][0]) * x;
                        y = L::set(weights[t].weight[p][1]) * y;
                    }
                    window[2 * p][v] = x - from_y;
                    (p == s_wave_depth - 1 ? done[v] : window[2 * p + 1][v]) = y + from_x;
                }
            }
            store(done, z, stride, base + s_window, columns);
        }
        const int last_base = columns - 2 - last_step;
        for (int q = 0; q < s_window; ++q)
            store(window[q], z, stride, last_base + q, columns);
    }

    static void apply_wave(double* strip, std::ptrdiff_t stride, int columns, const RotationStep* steps,
                           const RotationWeights* weights, int first_step, int last_step) noexcept
    {
        for (int row = 0; row < s_strip_rows; row += V * L::width)
            if (weights == nullptr)
                apply<false>(strip + row, stride, columns, steps, weights, first_step, last_step);
            else
                apply<true>(strip + row, stride, columns, steps, weights, first_step, last_step);
    }

    static void scale(double* strip, std::ptrdiff_t stride, int columns, const double* factors) noexcept
    {
        for (int k = 0; k < columns; ++k, strip += stride)
            for (int row = 0; row < s_strip_rows; row += L::width)
                L::store(strip + row, L::load(strip + row) * L::set(factors[k]));
    }
};

template <class L, int V>
constexpr RotationKernels rotation_kernels_of()
{
    return {.apply_wave = RotationStrip<L, V>::apply_wave, .scale = RotationStrip<L, V>::scale};
}

} // namespace qmml::matrix
