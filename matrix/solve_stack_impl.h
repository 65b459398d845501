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
        if (const Status status = system.factor(); status != Status::success)
            return status;
        system.arrange_factors();
        for (int j = 0; j < m; ++j)
            system.solve_column(b + std::ptrdiff_t{j} * n);
        for (int j = 0; j < n; ++j)
#pragma GCC unroll 8
            for (int v = 0; v < V; ++v)
                system.put(a + j * n, v, L::load(system.m_factors + j * s_rows + v * L::width));
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
            m_order[i] = static_cast<std::uint64_t>(i);
    }

    static D lanes(int v) noexcept { return L::load(s_numbers + v * L::width); }
    static M same(D a, D b) noexcept { return L::negate(L::differ(a, b)); } // numbers
    static D magnitude(D v) noexcept { return L::as_number(L::as_bits(v) & L::bits(INT64_MAX)); }
    static D compared(D v) noexcept { return L::as_number(L::as_bits(v) & L::bits(s_compared)); }
    static std::uint64_t bits_of(double v) noexcept { return __builtin_bit_cast(std::uint64_t, v); }

    M there(int v) const noexcept { return L::less(lanes(v), L::set(m_n)); }
    D get(const double* p, int v) const noexcept
    {
        return v < V - 1 ? L::load(p + v * L::width) : L::load_first(p + v * L::width, m_n - v * L::width);
    }
    void put(double* p, int v, D value) const noexcept
    {
        v < V - 1 ? L::store(p + v * L::width, value) : L::store_first(p + v * L::width, value, m_n - v * L::width);
    }

    Status factor() noexcept
    {
        Elimination e;
        if (!begin(e))
            return Status::singular;
        const int last = m_n - 1;
        std::uint64_t position = search(e, m_factors, 0);
        for (int j = 0; j <= last; ++j) {
            if (break_requested())
                return Status::stopped;
            if (j < last)
                position = eliminate(e, j, position);
        }
        replace_zero(m_factors[m_order[last] + static_cast<std::size_t>(last * s_rows)]);
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
        const int n = m_n;
        D largest[V];
#pragma GCC unroll 8
        for (int v = 0; v < V; ++v)
            largest[v] = L::set(0.0);
        for (int j = 0; j < n; ++j)
#pragma GCC unroll 8
            for (int v = 0; v < V; ++v) {
                const D value = get(m_a + j * n, v), size = magnitude(value);
                L::store(m_factors + j * s_rows + v * L::width, value);
                largest[v] = L::select(L::less(compared(largest[v]), compared(size)), size, largest[v]);
            }
        bool regular = true;
#pragma GCC unroll 8
        for (int v = 0; v < V; ++v) {
            e.alive[v] = there(v);
            const D size = L::select(e.alive[v], largest[v], L::set(1.0));
            regular &= !L::any(L::less(compared(size), compared(L::set(s_tiny))));
            e.scale[v] = L::set(1.0) / size;
            e.positions[v] = L::load(s_position_bits + v * L::width);
        }
        return regular;
    }

    // The position of the greatest merit among those alive, of equal ones the last; NaNs have none. The bits that the
    // comparison does not look at hold the position, so that one maximum finds both.
    static std::uint64_t search(const Elimination& e, const double* column, int first) noexcept
    {
        D merits[V], best = L::set(0.0);
        M finite = L::less(best, L::set(1.0));
#pragma GCC unroll 8
        for (int v = 0; v < V; ++v) {
            const D merit = L::load(column + v * L::width) * e.scale[v];
            const auto marked = (L::as_bits(merit) & L::bits(s_compared)) | L::as_bits(e.positions[v]);
            merits[v] = L::select(e.alive[v], L::as_number(marked), L::set(0.0));
            finite = L::both(finite, L::less(merits[v], L::as_number(L::bits(s_infinity))));
            best = v == 0 ? merits[v] : L::larger(best, merits[v]);
        }
        return L::any(L::negate(finite)) ? search_infinite(merits, first) : bits_of(L::largest_of(best)) & 15;
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
        const std::uint64_t row = m_order[position], displaced = m_order[j];
        m_order[position] = displaced;
        m_order[j] = row;
        double* const column = m_factors + j * s_rows;
        replace_zero(column[row]);
        const D pivot = L::set(column[row]);
        D ratios[V];
#pragma GCC unroll 8
        for (int v = 0; v < V; ++v) {
            const auto positions = L::as_bits(e.positions[v]);
            e.alive[v] = L::both(e.alive[v], L::any_bit(positions ^ L::bits(position)));
            const M stays = L::any_bit(positions ^ L::bits(static_cast<std::uint64_t>(j)));
            e.positions[v] = L::select(stays, e.positions[v], L::as_number(L::bits(position)));
            const D old = L::load(column + v * L::width);
            ratios[v] = L::select(e.alive[v], old, L::set(0.0)) / pivot;
            L::store(column + v * L::width, L::select(e.alive[v], ratios[v], old));
        }
        const auto take = [&](double* later) {
            const D factor = L::set(later[row]);
#pragma GCC unroll 8
            for (int v = 0; v < V; ++v) {
                const D old = L::load(later + v * L::width);
                L::store(later + v * L::width, L::select(e.alive[v], old - ratios[v] * factor, old));
            }
        };
        take(column + s_rows);
        const int n = m_n, next = j + 1;
        if (next == n - 1)
            return static_cast<std::uint64_t>(next);
        const std::uint64_t found = search(e, column + s_rows, next); // runs beside the other columns
        for (int k = next + 1; k < n; ++k)
            take(m_factors + k * s_rows);
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

    static D element(const Column& c, int i) noexcept
    {
        if constexpr (L::width == 8)
            return L::pick(c.parts[0], c.parts[V - 1], L::bits(static_cast<std::uint64_t>(i)));
        double all[s_rows];
        store(all, c);
        return L::set(all[i]);
    }

    // Rows in the order of their positions, and zeros where there are no rows.
    Column arranged(const Column& c) const noexcept
    {
        Column result;
        if constexpr (L::width == 8) {
#pragma GCC unroll 8
            for (int v = 0; v < V; ++v) {
                const D picked = L::pick(c.parts[0], c.parts[V - 1], L::load_bits(m_order + v * L::width));
                result.parts[v] = L::select(there(v), picked, L::set(0.0));
            }
        } else {
            double from[s_rows], to[s_rows];
            store(from, c);
            for (int i = 0; i < s_rows; ++i)
                to[i] = i < m_n ? from[m_order[i]] : 0.0;
            result = load(to);
        }
        return result;
    }

    void arrange_factors() noexcept
    {
        for (int j = 0, n = m_n; j < n; ++j)
            store(m_factors + j * s_rows, arranged(load(m_factors + j * s_rows)));
    }

    void solve_column(double* b) const noexcept
    {
        Column x = arranged(get(b));
        substitute(x);
        for (int round = 0; round < 2; ++round) {
            Column correction = arranged(residual(x, b));
            substitute(correction);
            if (!correct(x, correction))
                break;
        }
#pragma GCC unroll 8
        for (int v = 0; v < V; ++v)
            put(b, v, x.parts[v]);
    }

    // Takes a column times factor off the rows that reached tells.
    template <class Reached>
    static void take(Column& x, const double* column, D factor, Reached reached) noexcept
    {
#pragma GCC unroll 8
        for (int v = 0; v < V; ++v) {
            const M here = reached(lanes(v));
            const D part = L::select(here, L::load(column + v * L::width), L::set(0.0));
            x.parts[v] = L::select(here, x.parts[v] - part * factor, x.parts[v]);
        }
    }

    // The next element is worked out by itself, ahead of the rest of its column: it alone is waited for.
    void substitute(Column& x) const noexcept
    {
        const int last = m_n - 1;
        int k = 0;
        D value = element(x, 0);
        while (k < last && !L::any(L::negate(same(value, L::set(0.0))))) // what L holds for these does not matter
            value = element(x, ++k);
        for (; k < last; ++k) {
            const double* const column = m_factors + k * s_rows;
            const D next = element(x, k + 1) - L::set(column[k + 1]) * value;
            take(x, column, value, [reached = L::set(s_numbers[k])](D lane) { return L::less(reached, lane); });
            value = next;
        }
        const double* column = m_factors + last * s_rows;
        value = value / L::set(column[last]);
        for (; k > 0; --k, column -= s_rows) {
            const D next = (element(x, k - 1) - L::set(column[k - 1]) * value) / L::set((column - s_rows)[k - 1]);
            take(x, column, value, [reached = L::set(s_numbers[k])](D lane) { return L::less(lane, reached); });
            put(x, k, value);
            value = next;
        }
        put(x, 0, value);
    }
    static void put(Column& x, int i, D value) noexcept
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
        const int n = m_n;
        for (int k = 0; k < n; ++k) {
            const D factor = L::set(all[k]);
#pragma GCC unroll 8
            for (int v = 0; v < V; ++v)
                sums.parts[v] = sums.parts[v] + get(m_a + k * n, v) * factor;
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

    static constexpr double s_position_bits[] = {
        0x0p-1074, 0x1p-1074, 0x2p-1074, 0x3p-1074, 0x4p-1074, 0x5p-1074, 0x6p-1074, 0x7p-1074,
        0x8p-1074, 0x9p-1074, 0xap-1074, 0xbp-1074, 0xcp-1074, 0xdp-1074, 0xep-1074, 0xfp-1074,
    };

    const double* const m_a;
    const int m_n;
    std::uint64_t m_order[s_stack_order]; // the row of each position
    alignas(64) double m_factors[s_stack_order * s_rows];
};

template <class L>
Status solve_on_stack(double* a, double* b, int n, int m) noexcept
{
    using Solver = Status (*)(double*, double*, int, int) noexcept;
    constexpr int last = s_stack_order / L::width - 1;
    static constexpr Solver s_solvers[] = {
        StackSystem<L, 1>::solve,
        StackSystem<L, 2>::solve,
        StackSystem<L, last < 2 ? 1 : 3>::solve,
        StackSystem<L, last < 3 ? 1 : 4>::solve,
        StackSystem<L, last < 4 ? 1 : 5>::solve,
        StackSystem<L, last < 5 ? 1 : 6>::solve,
        StackSystem<L, last < 6 ? 1 : 7>::solve,
        StackSystem<L, last < 7 ? 1 : 8>::solve,
    };
    return s_solvers[(n - 1) / L::width](a, b, n, m);
}

} // namespace qmml::matrix
