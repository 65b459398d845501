// Whole columns added up, and the triangles solved between them, as templates over lanes. Nothing in here may be
// instantiated for a type that two levels share.
#pragma once

#include "matrix/solve_kernels.h"

#include <cstddef>

namespace qmml::matrix {

// Rows in lanes: f(i, count) is called for the rows from first up to rows, count of them at a time; a count that is
// known to be a full vector is known to the compiler as well.
template <class L>
struct Rows {
    using D = typename L::D;
    struct Full {
        constexpr operator int() const noexcept { return L::width; }
    };

    template <class F>
    static void each(int first, int rows, F f) noexcept
    {
        int i = first;
        for (; i + L::width <= rows; i += L::width)
            f(i, Full());
        if (i < rows)
            f(i, rows - i);
    }
    static D load(const double* p, Full) noexcept { return L::load(p); }
    static D load(const double* p, int count) noexcept { return L::load_first(p, count); }
    static void store(double* p, D v, Full) noexcept { L::store(p, v); }
    static void store(double* p, D v, int count) noexcept { L::store_first(p, v, count); }
};

// y += or -= the columns of a times x, one column after the other; the strides may run backwards.
template <class L, bool Add>
struct Columns {
    using D = typename L::D;

    template <int Count>
    static void take_some(double* y, ConstPart a, const double* x, std::ptrdiff_t step, int rows) noexcept
    {
        D factors[Count];
#pragma GCC unroll 8
        for (int k = 0; k < Count; ++k)
            factors[k] = L::set(x[k * step]);
        Rows<L>::each(0, rows, [&](int i, auto count) {
            D v = Rows<L>::load(y + i, count);
#pragma GCC unroll 8
            for (int k = 0; k < Count; ++k) {
                const D term = Rows<L>::load(a.data + i + k * a.stride, count) * factors[k];
                v = Add ? v + term : v - term;
            }
            Rows<L>::store(y + i, v, count);
        });
    }

    static void take(double* y, ConstPart a, const double* x, std::ptrdiff_t step, int rows, int cols) noexcept
    {
        int k = 0;
        for (; k + s_panel <= cols; k += s_panel)
            take_some<s_panel>(y, {a.data + k * a.stride, a.stride}, x + k * step, step, rows);
        for (; k < cols; ++k)
            take_some<1>(y, {a.data + k * a.stride, a.stride}, x + k * step, step, rows);
    }
};

// Triangles of a fixed order, in registers.
template <class L, int Order>
struct Triangle {
    static void lower(const double* l, std::ptrdiff_t stride, double* x) noexcept
    {
        double t[Order];
#pragma GCC unroll 8
        for (int i = 0; i < Order; ++i)
            t[i] = x[i];
#pragma GCC unroll 8
        for (int k = 0; k < Order; ++k)
#pragma GCC unroll 8
            for (int i = k + 1; i < Order; ++i)
                t[i] -= l[i + k * stride] * t[k];
#pragma GCC unroll 8
        for (int i = 0; i < Order; ++i)
            x[i] = t[i];
    }

    static void upper(const double* u, std::ptrdiff_t stride, double* x) noexcept
    {
        double t[Order];
#pragma GCC unroll 8
        for (int i = 0; i < Order; ++i)
            t[i] = x[i];
#pragma GCC unroll 8
        for (int k = Order - 1; k >= 0; --k) {
            t[k] /= u[k + k * stride];
#pragma GCC unroll 8
            for (int i = 0; i < k; ++i)
                t[i] -= u[i + k * stride] * t[k];
        }
#pragma GCC unroll 8
        for (int i = 0; i < Order; ++i)
            x[i] = t[i];
    }
};

template <class L>
struct Substitution {
    using TriangleKernel = void (*)(const double*, std::ptrdiff_t, double*) noexcept;

    static constexpr TriangleKernel s_lower[s_panel] = {
        Triangle<L, 1>::lower, Triangle<L, 2>::lower, Triangle<L, 3>::lower, Triangle<L, 4>::lower,
        Triangle<L, 5>::lower, Triangle<L, 6>::lower, Triangle<L, 7>::lower, Triangle<L, 8>::lower,
    };
    static constexpr TriangleKernel s_upper[s_panel] = {
        Triangle<L, 1>::upper, Triangle<L, 2>::upper, Triangle<L, 3>::upper, Triangle<L, 4>::upper,
        Triangle<L, 5>::upper, Triangle<L, 6>::upper, Triangle<L, 7>::upper, Triangle<L, 8>::upper,
    };

    static void run(const double* factors, int n, double* x) noexcept
    {
        const std::ptrdiff_t stride = n;
        int first = 0;
        while (first < n && x[first] == 0) // what L holds for them does not matter
            ++first;
        for (int k = first; k < n;) {
            const int order = n - k < s_panel ? n - k : s_panel, next = k + order;
            s_lower[order - 1](factors + k + k * stride, stride, x + k);
            if (next < n)
                Columns<L, false>::take(x + next, {factors + next + k * stride, stride}, x + k, 1, n - next, order);
            k = next;
        }
        for (int end = n; end > 0;) {
            const int k = (end - 1) / s_panel * s_panel;
            s_upper[end - k - 1](factors + k + k * stride, stride, x + k);
            if (k > 0)
                Columns<L, false>::take(x, {factors + (end - 1) * stride, -stride}, x + end - 1, -1, k, end - k);
            end = k;
        }
    }
};

} // namespace qmml::matrix
