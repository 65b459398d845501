// The local fits of the smoother over lanes, one fit in each. Included by one source per instruction set.
#pragma once

#include "stattest/kernels.h"

#include <limits>

namespace qmml::stattest {

// Neighbouring fits share most of their points: the loops run over the points of all of them, and a point outside a
// lane's neighbourhood has weight 0 there, which leaves every sum as it is.
template <class L>
struct LocalFitKernels {
    using D = typename L::D;
    // Sums are chains of additions: lanes of several registers keep the unit busy.
    static constexpr int s_registers = L::width < s_most_fits ? 2 : 1, s_fits = L::width * s_registers;
    static_assert(s_fits <= s_most_fits);

    struct Lanes {
        D at[s_registers];
    };

    struct Bandwidths {
        Lanes centre, h;
        int first, end;
    };

    static Bandwidths bandwidths(const double* x, const Window* windows) noexcept
    {
        double centre[s_fits], h[s_fits];
        Bandwidths result;
        result.first = std::numeric_limits<int>::max();
        result.end = 0;
        for (int k = 0; k < s_fits; ++k) {
            const Window w = windows[k];
            centre[k] = x[w.point];
            const double left = centre[k] - x[w.left], right = x[w.right] - centre[k];
            h[k] = left > right ? left : right;
            result.first = w.left < result.first ? w.left : result.first;
            result.end = w.end > result.end ? w.end : result.end;
        }
        for (int v = 0; v < s_registers; ++v) {
            result.centre.at[v] = L::load(centre + v * L::width);
            result.h.at[v] = L::load(h + v * L::width);
        }
        return result;
    }

    template <bool Robust>
    static Lanes weigh(const Scatter& scatter, const Bandwidths& b, double* weights) noexcept
    {
        const auto magnitude = L::bits(0x7fffffffffffffffu);
        const D one = L::set(1), zero = L::set(0);
        Lanes sum, h1, h9;
        for (int v = 0; v < s_registers; ++v) {
            sum.at[v] = zero;
            h1.at[v] = L::set(0.001) * b.h.at[v];
            h9.at[v] = L::set(0.999) * b.h.at[v];
        }
        for (int j = b.first; j < b.end; ++j) {
            const D x = L::set(scatter.x[j]);
            for (int v = 0; v < s_registers; ++v) {
                const D distance = L::as_number(L::as_bits(x - b.centre.at[v]) & magnitude);
                const D ratio = distance / b.h.at[v];
                const D rest = one - ratio * ratio * ratio;
                D weight = L::select(L::less_equal(distance, h1.at[v]), one, rest * rest * rest);
                if constexpr (Robust)
                    weight = weight * L::set(scatter.robustness[j]);
                weight = L::select(L::less_equal(distance, h9.at[v]), weight, zero);
                sum.at[v] = sum.at[v] + weight;
                L::store(weights, weight);
                weights += L::width;
            }
        }
        return sum;
    }

    static void fit(const Scatter& scatter, const Window* windows, double* weights, double* fitted,
                    bool* succeeded) noexcept
    {
        const Bandwidths b = bandwidths(scatter.x, windows);
        const Lanes sum = scatter.robustness ? weigh<true>(scatter, b, weights) : weigh<false>(scatter, b, weights);
        const D zero = L::set(0), one = L::set(1);

        Lanes mean;
        for (D& m : mean.at)
            m = zero;
        double* w = weights;
        for (int j = b.first; j < b.end; ++j)
            for (int v = 0; v < s_registers; ++v, w += L::width) {
                const D weight = L::load(w) / sum.at[v];
                L::store(w, weight);
                mean.at[v] = mean.at[v] + weight * L::set(scatter.x[j]);
            }

        Lanes square;
        for (D& s : square.at)
            s = zero;
        w = weights;
        for (int j = b.first; j < b.end; ++j)
            for (int v = 0; v < s_registers; ++v, w += L::width) {
                const D deviation = L::set(scatter.x[j]) - mean.at[v];
                square.at[v] = square.at[v] + L::load(w) * (deviation * deviation);
            }

        // Points too close together in x have no slope.
        Lanes slope, result;
        typename L::M sloped[s_registers];
        for (int v = 0; v < s_registers; ++v) {
            slope.at[v] = (b.centre.at[v] - mean.at[v]) / square.at[v];
            sloped[v] =
                L::both(L::less(zero, b.h.at[v]), L::less(L::set(0.001 * scatter.range), L::sqrt(square.at[v])));
            result.at[v] = zero;
        }
        w = weights;
        for (int j = b.first; j < b.end; ++j)
            for (int v = 0; v < s_registers; ++v, w += L::width) {
                const D weight = L::load(w);
                const D tilted = weight * (slope.at[v] * (L::set(scatter.x[j]) - mean.at[v]) + one);
                result.at[v] = result.at[v] + L::select(sloped[v], tilted, weight) * L::set(scatter.y[j]);
            }

        double sums[s_fits];
        for (int v = 0; v < s_registers; ++v) {
            L::store(fitted + v * L::width, result.at[v]);
            L::store(sums + v * L::width, sum.at[v]);
        }
        for (int k = 0; k < s_fits; ++k)
            succeeded[k] = sums[k] > 0;
    }
};

} // namespace qmml::stattest
