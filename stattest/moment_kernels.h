// Moments and distances over lanes. Included by one source per instruction set.
#pragma once

#include "stattest/kernels.h"

namespace qmml::stattest {

template <class L>
struct MomentKernels {
    using D = typename L::D;
    static constexpr int s_sums = 16, s_registers = s_sums / L::width; // value i goes to sum i mod 16

    static double tree(double* sums) noexcept
    {
        for (int step = s_sums / 2; step > 0; step /= 2)
            for (int i = 0; i < step; ++i)
                sums[i] += sums[i + step];
        return sums[0];
    }

    static BlockMoments moments(const double* values, int n) noexcept
    {
        const int whole = n - n % s_sums;
        const D base = L::set(values[0]);
        D sum[s_registers];
        for (D& s : sum)
            s = L::set(0);
        for (int i = 0; i < whole; i += s_sums)
            for (int k = 0; k < s_registers; ++k)
                sum[k] = sum[k] + (L::load(values + i + k * L::width) - base);
        double sums[s_sums];
        for (int k = 0; k < s_registers; ++k)
            L::store(sums + k * L::width, sum[k]);
        for (int i = whole; i < n; ++i)
            sums[i - whole] += values[i] - values[0];
        const double mean = values[0] + tree(sums) / n;

        const D centre = L::set(mean);
        D square[s_registers];
        for (int k = 0; k < s_registers; ++k)
            sum[k] = square[k] = L::set(0);
        for (int i = 0; i < whole; i += s_sums)
            for (int k = 0; k < s_registers; ++k) {
                const D d = L::load(values + i + k * L::width) - centre;
                sum[k] = sum[k] + d;
                square[k] = square[k] + d * d;
            }
        double squares[s_sums];
        for (int k = 0; k < s_registers; ++k) {
            L::store(sums + k * L::width, sum[k]);
            L::store(squares + k * L::width, square[k]);
        }
        for (int i = whole; i < n; ++i) {
            const double d = values[i] - mean;
            sums[i - whole] += d;
            squares[i - whole] += d * d;
        }
        const double rest = tree(sums); // what the rounding of the mean has left
        return {mean, tree(squares) - rest * rest / n};
    }

    // By the bits: a comparison with a NaN would be a fault at some levels.
    static bool all_finite(const double* values, int n) noexcept
    {
        const auto exponent = L::bits(0x7ff0000000000000u);
        auto bad = L::negate(L::any_bit(exponent));
        for (int i = 0; i < n; i += L::width)
            bad = L::either(bad, L::negate(L::any_bit((L::as_bits(L::load(values + i)) & exponent) ^ exponent)));
        return !L::any(bad);
    }

    static void distances(double* out, const double* values, int n, double centre) noexcept
    {
        const auto magnitude = L::bits(0x7fffffffffffffffu);
        const int whole = n - n % L::width;
        for (int i = 0; i < whole; i += L::width)
            L::store(out + i, L::as_number(L::as_bits(L::load(values + i) - L::set(centre)) & magnitude));
        for (int i = whole; i < n; ++i)
            out[i] = __builtin_fabs(values[i] - centre);
    }
};

} // namespace qmml::stattest
