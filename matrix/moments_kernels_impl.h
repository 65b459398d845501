// The moments' inner loops as templates over lanes. Included by one source per instruction set, each compiled for it:
// nothing in here may be instantiated for a type that two of those sources share.
#pragma once

#include "matrix/factors_tile.h"
#include "matrix/moments_kernels.h"
#include "matrix/rounded_difference_lanes.h"

namespace qmml::matrix {

template <class L>
struct MomentLoops {
    using D = typename L::D;
    static constexpr int s_strip_size = s_tile_cases * s_strip;

    static double minimum(const double* x, std::ptrdiff_t n) noexcept
    {
        constexpr int parallel = 4;
        constexpr double start = 3e30;
        D least[parallel];
        for (D& lanes : least)
            lanes = L::set(start);
        std::ptrdiff_t i = 0;
        for (; i + parallel * L::width <= n; i += parallel * L::width)
            for (int k = 0; k < parallel; ++k)
                least[k] = smaller(L::load(x + i + k * L::width), least[k]);
        for (; i + L::width <= n; i += L::width)
            least[0] = smaller(L::load(x + i), least[0]);
        if (i < n)
            least[0] = smaller(L::load_first(x + i, static_cast<int>(n - i)), least[0]);
        double lanes[L::width];
        L::store(lanes, smaller(smaller(least[0], least[1]), smaller(least[2], least[3])));
        double result = start;
        for (const double lane : lanes)
            result = lane < result ? lane : result;
        return result;
    }

    static void rounded_differences(const double* x, std::ptrdiff_t n, const RoundedShift& shift, double* out) noexcept
    {
        const RoundedShiftLanes<L> difference(shift);
        std::ptrdiff_t i = 0;
        for (; i + L::width <= n; i += L::width)
            L::store(out + i, difference(L::load(x + i)));
        if (i < n) {
            const auto rest = static_cast<int>(n - i);
            L::store_first(out + i, difference(L::load_first(x + i, rest)), rest);
        }
    }

    static void interleave(const double* columns, std::ptrdiff_t stride, int cases, double* strip) noexcept
    {
        for (int part = 0; part < s_strip; part += L::width)
            for (std::ptrdiff_t t = 0; t < cases; t += L::width) {
                D square[L::width];
#pragma GCC unroll 8
                for (int i = 0; i < L::width; ++i)
                    square[i] = L::load(columns + (part + i) * stride + t);
                L::transpose(square);
#pragma GCC unroll 8
                for (int i = 0; i < L::width; ++i)
                    L::store(strip + (t + i) * s_strip + part, square[i]);
            }
    }

    static void update_means(const double* tile, int strips, int cases, double before, double* means) noexcept
    {
        all_vectors<Output::none>(tile, strips, cases, before, means, nullptr, nullptr);
    }
    static void update_sums(const double* tile, int strips, int cases, double before, double* means,
                            double* sums) noexcept
    {
        all_vectors<Output::sums>(tile, strips, cases, before, means, sums, nullptr);
    }
    static void deviations(double* tile, int strips, int cases, double before, double* means, double* after) noexcept
    {
        all_vectors<Output::deviations>(tile, strips, cases, before, means, tile, after);
    }

    static void add_products(const double* left, const double* right, int variables, int cases, double* blocks) noexcept
    {
        for (std::ptrdiff_t i = 0; i < variables; i += s_strip) {
            const double* strip = left + i * s_tile_cases;
            if constexpr (s_rows == s_strip) {
                if (variables - i > s_strip / 2)
                    row_of_blocks<s_strip>(strip, right, i / s_strip, cases, blocks);
                else if (variables - i > s_strip / 4)
                    row_of_blocks<s_strip / 2>(strip, right, i / s_strip, cases, blocks);
                else
                    row_of_blocks<s_strip / 4>(strip, right, i / s_strip, cases, blocks);
            } else {
                for (std::ptrdiff_t r = 0; r < s_strip && i + r < variables; r += s_rows)
                    row_of_blocks<s_rows>(strip + r, right, i / s_strip, cases, blocks + r * s_strip);
            }
            blocks += (i / s_strip + 1) * s_block;
        }
    }

private:
    enum class Output { none, sums, deviations };

    static constexpr int s_rows = L::width == 8 ? 8 : 4; // of a tile of accumulators

    static D smaller(D a, D b) noexcept
    {
        return L::select(L::less(a, b), a, b);
    }

    // V vectors side by side: the running mean's latency would leave the unit idle.
    template <Output O, int V>
    static void vectors(const double* x, int cases, double before, double* means, double* out, double* after) noexcept
    {
        D mean[V], sum[V];
#pragma GCC unroll 4
        for (std::ptrdiff_t v = 0; v < V; ++v) {
            mean[v] = L::load(means + v * L::width);
            if constexpr (O == Output::sums)
                sum[v] = L::load(out + v * L::width);
        }
        for (std::ptrdiff_t t = 0; t < cases; ++t) {
            before += 1;
            const D count = L::set(before);
#pragma GCC unroll 4
            for (std::ptrdiff_t v = 0; v < V; ++v) {
                const std::ptrdiff_t at = offset(v) + t * s_strip;
                const D value = L::load(x + at);
                const D deviation = value - mean[v];
                mean[v] = mean[v] + deviation / count;
                if constexpr (O == Output::sums)
                    sum[v] = sum[v] + (value - mean[v]) * deviation;
                if constexpr (O == Output::deviations) {
                    L::store(out + at, deviation);
                    L::store(after + at, value - mean[v]);
                }
            }
        }
#pragma GCC unroll 4
        for (std::ptrdiff_t v = 0; v < V; ++v) {
            L::store(means + v * L::width, mean[v]);
            if constexpr (O == Output::sums)
                L::store(out + v * L::width, sum[v]);
        }
    }

    static constexpr std::ptrdiff_t offset(std::ptrdiff_t vector) noexcept // within a tile
    {
        const std::ptrdiff_t variable = vector * L::width;
        return variable / s_strip * s_strip_size + variable % s_strip;
    }

    template <Output O, int V>
    static void vectors_from(std::ptrdiff_t first, const double* x, int cases, double before, double* means,
                             double* out, double* after) noexcept
    {
        if constexpr (O == Output::sums)
            out += first * L::width;
        if constexpr (O == Output::deviations) {
            out += offset(first);
            after += offset(first);
        }
        vectors<O, V>(x + offset(first), cases, before, means + first * L::width, out, after);
    }

    template <Output O>
    static void all_vectors(const double* x, int strips, int cases, double before, double* means, double* out,
                            double* after) noexcept
    {
        const std::ptrdiff_t count = static_cast<std::ptrdiff_t>(strips) * s_strip / L::width;
        std::ptrdiff_t first = 0;
        for (; first + 4 <= count; first += 4)
            vectors_from<O, 4>(first, x, cases, before, means, out, after);
        if (count - first == 3) // a rest remains where a vector is a strip
            vectors_from<O, 3>(first, x, cases, before, means, out, after);
        else if (count - first == 2)
            vectors_from<O, 2>(first, x, cases, before, means, out, after);
        else if (count - first == 1)
            vectors_from<O, 1>(first, x, cases, before, means, out, after);
    }

    // The blocks of one strip of rows, R rows of each.
    template <int R>
    static void row_of_blocks(const double* left, const double* right, std::ptrdiff_t strip, int cases,
                              double* blocks) noexcept
    {
        std::ptrdiff_t j = 0;
        if constexpr (L::width == s_strip) {
            for (; j + 2 <= strip + 1; j += 2)
                update_tile<L, Term::added, R, 2>(blocks + j * s_block, {s_strip, s_block}, left, s_strip,
                                                  right + j * s_strip_size, s_strip, s_strip_size, cases);
            if (j <= strip)
                update_tile<L, Term::added, R, 1>(blocks + j * s_block, {s_strip, s_block}, left, s_strip,
                                                  right + j * s_strip_size, s_strip, s_strip_size, cases);
        } else {
            for (; j <= strip; ++j)
                for (int part = 0; part < s_strip; part += 2 * L::width)
                    update_tile<L, Term::added, R, 2>(blocks + j * s_block + part, {s_strip, L::width}, left, s_strip,
                                                      right + j * s_strip_size + part, s_strip, L::width, cases);
        }
    }
};

template <class L>
constexpr MomentKernels moment_kernels_of() noexcept
{
    using Loops = MomentLoops<L>;
    return {Loops::minimum,     Loops::rounded_differences, Loops::interleave,  Loops::update_means,
            Loops::update_sums, Loops::deviations,          Loops::add_products};
}

} // namespace qmml::matrix
