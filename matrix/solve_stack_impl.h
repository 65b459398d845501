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
        int position = search(e, m_factors, 0);
        for (int j = 0; j < m_n; ++j) {
            if (break_requested())
                return Status::stopped;
            position = eliminate(e, j, position);
        }
        return Status::success;
    }

    // Copies and measures.
    bool begin(Elimination& e) noexcept
    {
        D largest[V];
#pragma GCC unroll 8
        for (int v = 0; v < V; ++v)
            largest[v] = L::set(0.0);
        for (int j = 0; j < m_n; ++j)
#pragma GCC unroll 8
            for (int v = 0; v < V; ++v) {
                const D value = get(m_a + j * m_n, v), size = magnitude(value);
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
    static int search(const Elimination& e, const double* column, int first) noexcept
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
        const std::uint64_t found =
            L::any(L::negate(finite)) ? search_infinite(merits) : bits_of(L::largest_of(best));
        const int position = static_cast<int>(found & 15);
        return position < first ? first : position;
    }

    [[gnu::noinline]] static std::uint64_t search_infinite(const D (&merits)[V]) noexcept
    {
        double all[s_rows];
        for (int v = 0; v < V; ++v)
            L::store(all + v * L::width, merits[v]);
        std::uint64_t best = 0;
        for (const double merit : all)
            if (bits_of(merit) <= (s_infinity | 15) && bits_of(merit) > best)
                best = bits_of(merit);
        return best;
    }

    // The step of column j, whose pivot has been found; the position of the next one.
    int eliminate(Elimination& e, int j, int position) noexcept
    {
        const std::uint64_t row = m_order[position], displaced = m_order[j];
        m_order[position] = displaced;
        m_order[j] = row;
        double* const column = m_factors + j * s_rows;
        if ((bits_of(column[row]) & s_compared) == 0)
            column[row] = s_tiny;
        const D pivot = L::set(column[row]);
        const D here = L::set(static_cast<int>(row)), moved = L::set(static_cast<int>(displaced));
        D ratios[V];
#pragma GCC unroll 8
        for (int v = 0; v < V; ++v) {
            e.alive[v] = L::both(e.alive[v], L::differ(lanes(v), here));
            e.positions[v] = L::select(same(lanes(v), moved),
                                       L::as_number(L::bits(static_cast<std::uint64_t>(position))), e.positions[v]);
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
        if (j + 1 == m_n)
            return 0;
        take(column + s_rows);
        const int next = search(e, column + s_rows, j + 1); // runs beside the other columns
        for (int k = j + 2; k < m_n; ++k)
            take(m_factors + k * s_rows);
        return next;
    }

    // to[i] = from[order[i]], and zeros where there are no rows.
    void arrange(double* to, const double* from) const noexcept
    {
        if constexpr (L::width == 8) {
            const D low = get(from, 0), high = get(from, V - 1);
#pragma GCC unroll 8
            for (int v = 0; v < V; ++v) {
                const D picked = L::pick(low, high, L::load_bits(m_order + v * L::width));
                L::store(to + v * L::width, L::select(there(v), picked, L::set(0.0)));
            }
        } else {
            double rows[s_rows];
            for (int i = 0; i < s_rows; ++i)
                rows[i] = i < m_n ? from[m_order[i]] : 0.0;
            for (int i = 0; i < s_rows; ++i)
                to[i] = rows[i];
        }
    }

    void arrange_factors() noexcept
    {
        for (int j = 0; j < m_n; ++j)
            arrange(m_factors + j * s_rows, m_factors + j * s_rows);
    }

    void solve_column(double* b) const noexcept
    {
        alignas(64) double x[s_rows], residual[s_rows], correction[s_rows];
        arrange(x, b);
        substitute(x);
        for (int round = 0; round < 2; ++round) {
            find_residual(residual, x, b);
            arrange(correction, residual);
            substitute(correction);
            if (!correct(x, correction))
                break;
        }
#pragma GCC unroll 8
        for (int v = 0; v < V; ++v)
            put(b, v, L::load(x + v * L::width));
    }

    // The next element is worked out by itself, ahead of the vector that it is in: it alone is waited for.
    void substitute(double* x) const noexcept
    {
        const auto take = [x](const double* column, D factor, auto reached) {
#pragma GCC unroll 8
            for (int v = 0; v < V; ++v) {
                const M here = reached(lanes(v));
                const D old = L::load(x + v * L::width);
                const D part = L::select(here, L::load(column + v * L::width), L::set(0.0));
                L::store(x + v * L::width, L::select(here, old - part * factor, old));
            }
        };
        int k = 0;
        while (k < m_n && x[k] == 0) // what L holds for them does not matter
            ++k;
        if (k < m_n - 1) {
            D value = L::set(x[k]);
            for (; k < m_n - 1; ++k) {
                const double* const column = m_factors + k * s_rows;
                const D next = L::set(x[k + 1]) - L::set(column[k + 1]) * value;
                take(column, value, [k](D lane) { return L::less(L::set(k), lane); });
                value = next;
            }
        }
        const double* column = m_factors + (m_n - 1) * s_rows;
        D value = L::set(x[m_n - 1]) / L::set(column[m_n - 1]);
        L::store_first(x + m_n - 1, value, 1);
        for (k = m_n - 1; k > 0; --k, column -= s_rows) {
            const D next = (L::set(x[k - 1]) - L::set(column[k - 1]) * value) / L::set((column - s_rows)[k - 1]);
            take(column, value, [k](D lane) { return L::less(lane, L::set(k)); });
            L::store_first(x + k, value, 1);
            value = next;
        }
        L::store_first(x, value, 1);
    }

    void find_residual(double* r, const double* x, const double* b) const noexcept
    {
        D sums[V];
#pragma GCC unroll 8
        for (int v = 0; v < V; ++v)
            sums[v] = -get(b, v);
        for (int k = 0; k < m_n; ++k) {
            const D factor = L::set(x[k]);
#pragma GCC unroll 8
            for (int v = 0; v < V; ++v)
                sums[v] = sums[v] + get(m_a + k * m_n, v) * factor;
        }
#pragma GCC unroll 8
        for (int v = 0; v < V; ++v)
            L::store(r + v * L::width, sums[v]);
    }

    // Whether the correction was large.
    static bool correct(double* x, const double* correction) noexcept
    {
        bool large = false;
#pragma GCC unroll 8
        for (int v = 0; v < V; ++v) {
            const D c = L::load(correction + v * L::width), value = L::load(x + v * L::width) - c;
            L::store(x + v * L::width, value);
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
