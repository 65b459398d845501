// Normal tails, distances and scores over lanes. Included by one source per instruction set.
#pragma once

#include "core/elementary_kernels.h"
#include "distrib/normal.h"
#include "stattest/kernels.h"

namespace qmml::stattest {

template <class L>
struct NormalKernels {
    using D = typename L::D;

    static void lower(double* values, int n, double mu, double sigma) noexcept
    {
        for (int i = 0; i < n; i += L::width)
            L::store(values + i, normal_lower_lane<L>((L::load(values + i) - L::set(mu)) / L::set(sigma)));
    }

    static D first_indices() noexcept
    {
        constexpr double s_indices[8] = {0, 1, 2, 3, 4, 5, 6, 7};
        return L::load(s_indices);
    }

    static double largest_distance(const double* lower_tails, int n) noexcept
    {
        const auto magnitude = L::bits(0x7fffffffffffffffu);
        const auto distance = [=](D a, D b) { return L::as_number(L::as_bits(a - b) & magnitude); };
        const D count = L::set(n), one = L::set(1);
        D largest = L::set(0), index = first_indices();
        const int whole = n - n % L::width;
        for (int i = 0; i < whole; i += L::width) {
            const D tail = L::load(lower_tails + i);
            const D below = distance(index / count, tail), above = distance((index + one) / count, tail);
            const D larger = L::select(L::less(below, above), above, below);
            largest = L::select(L::less(largest, larger), larger, largest);
            index = index + L::set(L::width);
        }
        double lanes[L::width], result = 0;
        L::store(lanes, largest);
        const auto consider = [&result](double d) { result = d > result ? d : result; };
        for (const double d : lanes)
            consider(d);
        for (int i = whole; i < n; ++i) {
            consider(__builtin_fabs(static_cast<double>(i) / n - lower_tails[i]));
            consider(__builtin_fabs(static_cast<double>(i + 1) / n - lower_tails[i]));
        }
        return result;
    }

    // J. D. Beasley and S. G. Springer, Algorithm AS 111, The percentage points of the normal distribution, Applied
    // Statistics 26 (1977), 118-121; for 0 < p < 0.5.
    static D lower_quantile(D p) noexcept
    {
        const auto c = [](double v) { return L::set(v); };
        const D q = p - c(0.5);
        const D s = q * q;
        const D centre =
            q * (((c(-25.44106049637) * s + c(41.39119773534)) * s + c(-18.61500062529)) * s + c(2.50662823884)) /
            ((((c(3.13082909833) * s + c(-21.06224101826)) * s + c(23.08336743743)) * s + c(-8.47351093090)) * s +
             c(1));
        const D r = L::sqrt(c(0) - elementary::log<L>(p));
        const D tail = (((c(2.32121276858) * r + c(4.85014127135)) * r + c(-2.29796479134)) * r + c(-2.78718931138)) /
                       ((c(1.63706781897) * r + c(3.54388924762)) * r + c(1));
        return L::select(L::less(q, c(-0.42)), c(0) - tail, centre);
    }

    static void scores(double* out, int n) noexcept
    {
        const int half = n / 2;
        const D last = L::set(half), size = L::set(n + 0.25);
        D rank = first_indices() + L::set(1);
        for (int i = 0; i < half; i += L::width) {
            const D used = L::select(L::less(last, rank), last, rank); // what is beyond the end is not used
            L::store(out + i, lower_quantile((used - L::set(0.375)) / size));
            rank = rank + L::set(L::width);
        }
    }
};

} // namespace qmml::stattest
