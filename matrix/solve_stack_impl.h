// Systems of at most s_stack_order as templates over lanes: V vectors hold a column, and everything but what is left in
// the caller's arrays stands on the stack. Nothing in here may be instantiated for a type that two levels share.
#pragma once

#include "core/break_check.h"
#include "matrix/solve_kernels.h"

#include <cstdint>

namespace qmml::matrix {

// The caller's matrix serves as the untouched copy: the factors replace it at the end.
template <class L, int V>
class StackSystem {
    using D = typename L::D;
    using M = typename L::M;

    static constexpr int s_rows = V * L::width;
    static constexpr std::uint64_t s_compared = 0x7FFFFFFFFFFFFFF0; // of a magnitude, by the tolerant comparisons
    static constexpr std::uint64_t s_infinity = 0x7FF0000000000000;
    static constexpr double s_tiny = 1e-20;
    static constexpr double s_numbers[] = {0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15};

public:
    static Status solve(double* a, double* b, int n, int m) noexcept
    {
        StackSystem system(a, n);
        if (const Status status = system.factor(m > 0 ? b : nullptr); status != Status::success)
            return status;
        system.arrange_factors();
        for (int j = 0; j < m; ++j)
            system.solve_column(b + std::ptrdiff_t{j} * n, j == 0);
        for (int j = 0; j < n; ++j)
            system.put(a + std::ptrdiff_t{j} * n, load(system.column(j)));
        return Status::success;
    }

private:
    // Rows keep their places while they are factored. A row's position is where the exchanges would have taken it; it
    // is alive until it becomes a pivot's.
    struct Elimination {
        D scale[V], positions[V]; // bits of integers
        M alive[V];
    };

    StackSystem(const double* a, int n) noexcept : m_a(a), m_n(n)
    {
        for (int i = 0; i < s_stack_order; ++i)
            m_order[i] = s_integers[i];
    }

    static D lanes(int v) noexcept { return L::load(s_numbers + v * L::width); }
    static M same(D a, D b) noexcept { return L::negate(L::differ(a, b)); }
    static D magnitude(D v) noexcept { return L::as_number(L::as_bits(v) & L::bits(INT64_MAX)); }
    static D compared(D v) noexcept { return L::as_number(L::as_bits(v) & L::bits(s_compared)); }
    static std::uint64_t bits_of(double v) noexcept { return __builtin_bit_cast(std::uint64_t, v); }

    const double* given(int j) const noexcept { return m_a + std::ptrdiff_t{j} * m_n; }
    const double* column(int j) const noexcept { return m_factors + std::ptrdiff_t{j} * s_rows; }
    double* column(int j) noexcept { return m_factors + std::ptrdiff_t{j} * s_rows; }
    M there(int v) const noexcept { return L::less(lanes(v), L::set(m_n)); }
    D get(const double* p, int v) const noexcept
    {
        return v < V - 1 ? L::load(p + v * L::width) : L::load_first(p + v * L::width, m_n - v * L::width);
    }

    // The first right-hand side, which may be null, goes along as one more column: that takes no time of its own.
    Status factor(const double* b) noexcept
    {
        Elimination e;
        if (!begin(e))
            return Status::singular;
        const int last = m_n - 1;
#pragma GCC unroll 8
        for (int v = 0; v < V; ++v)
            L::store(column(m_n) + v * L::width, b != nullptr ? get(b, v) : L::set(0.0));
        std::uint64_t position = search(e, column(0), 0);
        for (int j = 0; j <= last; ++j) {
            if (break_requested())
                return Status::stopped;
            if (j < last)
                position = eliminate(e, j, position);
        }
        replace_zero(column(last)[bits_of(m_order[last])]);
        return Status::success;
    }

    static void replace_zero(double& pivot) noexcept
    {
        if ((bits_of(pivot) & s_compared) == 0)
            pivot = s_tiny;
    }

    // Copies and measures.
    bool begin(Elimination& e) noexcept
    {
        D largest[V];
#pragma GCC unroll 8
        for (int v = 0; v < V; ++v)
            largest[v] = L::set(0.0);
        for (int j = 0, n = m_n; j < n; ++j) {
#pragma GCC unroll 8
            for (int v = 0; v < V; ++v) {
                const D value = get(given(j), v), size = magnitude(value);
                L::store(column(j) + v * L::width, value);
                largest[v] = L::select(L::less(compared(largest[v]), compared(size)), size, largest[v]);
            }
        }
        bool regular = true;
#pragma GCC unroll 8
        for (int v = 0; v < V; ++v) {
            e.alive[v] = there(v);
            const D size = L::select(e.alive[v], largest[v], L::set(1.0));
            regular &= !L::any(L::less(compared(size), compared(L::set(s_tiny))));
            e.scale[v] = L::set(1.0) / size;
            e.positions[v] = L::load(s_integers + v * L::width);
        }
        return regular;
    }

    // The position of the greatest merit among those alive, of equal ones the last; NaNs have none. The bits that the
    // comparison does not look at hold the position, so that one maximum finds both.
    static std::uint64_t search(const Elimination& e, const double* elements, int first) noexcept
    {
        D merits[V], best = L::set(0.0);
        bool finite = true;
#pragma GCC unroll 8
        for (int v = 0; v < V; ++v) {
            const D merit = L::load(elements + v * L::width) * e.scale[v];
            const auto marked = (L::as_bits(merit) & L::bits(s_compared)) | L::as_bits(e.positions[v]);
            merits[v] = L::select(e.alive[v], L::as_number(marked), L::set(0.0));
            finite &= !L::any(L::negate(L::less(merits[v], L::as_number(L::bits(s_infinity)))));
            best = v == 0 ? merits[v] : L::larger(best, merits[v]);
        }
        return finite ? bits_of(L::largest_of(best)) & 15 : search_infinite(merits, first);
    }

    [[gnu::noinline]] static std::uint64_t search_infinite(const D (&merits)[V], int first) noexcept
    {
        double all[s_rows];
        for (int v = 0; v < V; ++v)
            L::store(all + v * L::width, merits[v]);
        std::uint64_t best = 0;
        for (const double merit : all)
            if (bits_of(merit) <= (s_infinity | 15) && bits_of(merit) > best)
                best = bits_of(merit);
        return best == 0 ? static_cast<std::uint64_t>(first) : best & 15;
    }

    // The step of column j, which is not the last and whose pivot has been found; the position of the next one.
    std::uint64_t eliminate(Elimination& e, int j, std::uint64_t position) noexcept
    {
        const std::uint64_t row = bits_of(m_order[position]);
        const double displaced = m_order[j];
        m_order[j] = m_order[position];
        m_order[position] = displaced;
        double* const pivots = column(j);
        replace_zero(pivots[row]);
        const D pivot = L::set(pivots[row]);
        D ratios[V];
#pragma GCC unroll 8
        for (int v = 0; v < V; ++v) {
            const auto positions = L::as_bits(e.positions[v]);
            e.alive[v] = L::both(e.alive[v], L::any_bit(positions ^ L::bits(position)));
            const M stays = L::any_bit(positions ^ L::bits(static_cast<std::uint64_t>(j)));
            e.positions[v] = L::select(stays, e.positions[v], L::as_number(L::bits(position)));
            const D old = L::load(pivots + v * L::width);
            ratios[v] = L::select(e.alive[v], old, L::set(0.0)) / pivot;
            L::store(pivots + v * L::width, L::select(e.alive[v], ratios[v], old));
        }
        const auto take = [&](double* later) {
            const D factor = L::set(later[row]);
#pragma GCC unroll 8
            for (int v = 0; v < V; ++v) {
                const D old = L::load(later + v * L::width);
                L::store(later + v * L::width, L::select(e.alive[v], old - ratios[v] * factor, old));
            }
        };
        const int n = m_n, next = j + 1;
        take(column(next));
        m_reached |= column(n)[row] != 0; // what L holds for leading zeros does not matter
        if (m_reached)
            take(column(n));
        if (next == n - 1)
            return static_cast<std::uint64_t>(next);
        const std::uint64_t found = search(e, column(next), next); // runs beside the other columns
        for (int k = next + 1; k < n; ++k)
            take(column(k));
        return found;
    }

    // A column in registers.
    struct Column {
        D parts[V];
    };

    static Column load(const double* p) noexcept
    {
        Column c;
#pragma GCC unroll 8
        for (int v = 0; v < V; ++v)
            c.parts[v] = L::load(p + v * L::width);
        return c;
    }
    static void store(double* p, const Column& c) noexcept
    {
#pragma GCC unroll 8
        for (int v = 0; v < V; ++v)
            L::store(p + v * L::width, c.parts[v]);
    }
    Column get(const double* p) const noexcept
    {
        Column c;
#pragma GCC unroll 8
        for (int v = 0; v < V; ++v)
            c.parts[v] = get(p, v);
        return c;
    }

    void put(double* p, const Column& c) const noexcept
    {
        constexpr int last = V - 1;
#pragma GCC unroll 8
        for (int v = 0; v < last; ++v)
            L::store(p + v * L::width, c.parts[v]);
        L::store_first(p + last * L::width, c.parts[last], m_n - last * L::width);
    }

    static D element(const Column& c, int i) noexcept
    {
        if constexpr (L::width == 8) {
            return L::pick(c.parts[0], c.parts[V - 1], L::bits(static_cast<std::uint64_t>(i)));
        } else {
            double all[s_rows];
            store(all, c);
            return L::set(all[i]);
        }
    }

    // Rows in the order of their positions, and zeros where there are no rows.
    Column arranged(const Column& c) const noexcept
    {
        Column result;
        double from[s_rows];
        if constexpr (L::width < 8)
            store(from, c);
#pragma GCC unroll 8
        for (int v = 0; v < V; ++v) {
            const auto rows = L::as_bits(L::load(m_order + v * L::width));
            if constexpr (L::width == 8)
                result.parts[v] = L::pick(c.parts[0], c.parts[V - 1], rows);
            else
                result.parts[v] = L::gather(from, rows);
            result.parts[v] = L::select(there(v), result.parts[v], L::set(0.0));
        }
        return result;
    }

    void arrange_factors() noexcept
    {
        for (int j = 0, n = m_n; j <= n; ++j)
            store(column(j), arranged(load(column(j))));
    }

    void solve_column(double* b, bool first) const noexcept
    {
        Column x = first ? load(column(m_n)) : lower(arranged(get(b)));
        x = upper(x);
        if (correct(x, upper(lower(arranged(residual(x, b))))))
            correct(x, upper(lower(arranged(residual(x, b)))));
        put(b, x);
    }

    // Takes a column times factor off the rows that reached tells.
    template <class Reached>
    static void take(Column& x, const double* elements, D factor, Reached reached) noexcept
    {
#pragma GCC unroll 8
        for (int v = 0; v < V; ++v) {
            const M here = reached(lanes(v));
            const D part = L::select(here, L::load(elements + v * L::width), L::set(0.0));
            x.parts[v] = L::select(here, x.parts[v] - part * factor, x.parts[v]);
        }
    }

    // The next element is worked out by itself, ahead of the rest of its column: it alone is waited for.
    Column lower(Column x) const noexcept
    {
        const int last = m_n - 1;
        int k = 0;
        D value = element(x, 0);
        while (k < last && !L::any(L::negate(same(value, L::set(0.0))))) // what L holds for these does not matter
            value = element(x, ++k);
        for (; k < last; ++k) {
            const double* const l = column(k);
            const D next = element(x, k + 1) - L::set(l[k + 1]) * value;
            take(x, l, value, [reached = L::set(s_numbers[k])](D lane) { return L::less(reached, lane); });
            value = next;
        }
        return x;
    }
    Column upper(Column x) const noexcept
    {
        int k = m_n - 1;
        D value = element(x, k) / L::set(column(k)[k]);
        for (; k > 0; --k) {
            const double* const u = column(k);
            const D next = (element(x, k - 1) - L::set(u[k - 1]) * value) / L::set(column(k - 1)[k - 1]);
            take(x, u, value, [reached = L::set(s_numbers[k])](D lane) { return L::less(lane, reached); });
            set_element(x, k, value);
            value = next;
        }
        set_element(x, 0, value);
        return x;
    }
    static void set_element(Column& x, int i, D value) noexcept
    {
#pragma GCC unroll 8
        for (int v = 0; v < V; ++v)
            x.parts[v] = L::select(same(lanes(v), L::set(s_numbers[i])), value, x.parts[v]);
    }

    Column residual(const Column& x, const double* b) const noexcept
    {
        double all[s_rows];
        store(all, x);
        Column sums = get(b);
#pragma GCC unroll 8
        for (int v = 0; v < V; ++v)
            sums.parts[v] = -sums.parts[v];
        for (int k = 0, n = m_n; k < n; ++k) {
            const D factor = L::set(all[k]);
#pragma GCC unroll 8
            for (int v = 0; v < V; ++v)
                sums.parts[v] = sums.parts[v] + get(given(k), v) * factor;
        }
        return sums;
    }

    // Whether the correction was large.
    static bool correct(Column& x, const Column& correction) noexcept
    {
        bool large = false;
#pragma GCC unroll 8
        for (int v = 0; v < V; ++v) {
            const D c = correction.parts[v], value = x.parts[v] - c;
            x.parts[v] = value;
            const M nonzero = L::less(L::set(0.0), compared(value));
            const D ratio = L::select(nonzero, c, L::set(0.0)) / L::select(nonzero, value, L::set(1.0));
            large |= L::any(L::less(L::set(1e-14), magnitude(ratio)));
        }
        return large;
    }

    static constexpr double s_integers[] = {
        0x0p-1074, 0x1p-1074, 0x2p-1074, 0x3p-1074, 0x4p-1074, 0x5p-1074, 0x6p-1074, 0x7p-1074,
        0x8p-1074, 0x9p-1074, 0xap-1074, 0xbp-1074, 0xcp-1074, 0xdp-1074, 0xep-1074, 0xfp-1074,
    };

    const double* const m_a;
    const int m_n;
    bool m_reached = false;        // the first right-hand side's first number that is not 0
    double m_order[s_stack_order]; // the row of each position, as bits of an integer
    alignas(64) double m_factors[(s_stack_order + 1) * s_rows];
};

// With as few vectors as hold a column.
template <class L, int V = 1>
Status solve_on_stack(double* a, double* b, int n, int m) noexcept
{
    if constexpr (V * L::width < s_stack_order)
        if (n > V * L::width)
            return solve_on_stack<L, V + 1>(a, b, n, m);
    return StackSystem<L, V>::solve(a, b, n, m);
}

} // namespace qmml::matrix
