// The solver's kernels as templates over lanes. Included by one source per instruction set, each compiled for it:
// nothing in here may be instantiated for a type that two of those sources share.
#pragma once

#include "matrix/solve_columns.h"
#include "matrix/solve_stack_impl.h"

#include <cstdint>

namespace qmml::matrix {

template <class L>
struct SolveImplementation {
    using D = typename L::D;
    using M = typename L::M;
    using R = Rows<L>;

    // The bits that the tolerant comparisons look at: cut down to these, numbers compare plainly.
    static D compared(D v) noexcept { return L::as_number(L::as_bits(v) & L::bits(~std::uint64_t{0xF})); }
    static D magnitude(D v) noexcept { return L::as_number(L::as_bits(v) & L::bits(INT64_MAX)); }

    static void copy_and_measure(double* copy, double* row_maxima, const double* a, int n) noexcept
    {
        for (int i = 0; i < n; ++i)
            row_maxima[i] = 0.0;
        const std::ptrdiff_t stride = n;
        for (int j = 0; j < n; j += 4) {
            const int cols = n - j < 4 ? n - j : 4;
            const std::ptrdiff_t start = j * stride;
            R::each(0, n, [&](int i, auto count) {
                D largest = R::load(row_maxima + i, count);
                for (int k = 0; k < cols; ++k) {
                    const D value = R::load(a + start + i + k * stride, count), v = magnitude(value);
                    R::store(copy + start + i + k * stride, value, count);
                    largest = L::select(L::less(compared(largest), compared(v)), v, largest);
                }
                R::store(row_maxima + i, largest, count);
            });
        }
    }

    // The row of the greatest merit, of equal ones the last; a NaN has none.
    struct Search {
        static constexpr double s_numbers[] = {0, 1, 2, 3, 4, 5, 6, 7};
        static_assert(L::width <= 8);

        D lanes = L::load(s_numbers), merit = L::set(0.0), row;

        explicit Search(int first) noexcept : row(L::set(first)) {}

        void keep(M better, D merits, int i) noexcept
        {
            merit = L::select(better, merits, merit);
            row = L::select(better, lanes + L::set(i), row);
        }
        void look(D merits, int i, typename R::Full) noexcept { keep(L::less_equal(merit, merits), merits, i); }
        void look(D merits, int i, int count) noexcept
        {
            keep(L::both(L::less_equal(merit, merits), L::less(lanes, L::set(count))), merits, i);
        }

        int result() const noexcept
        {
            double all_merits[L::width], all_rows[L::width];
            L::store(all_merits, merit);
            L::store(all_rows, row);
            double best = all_merits[0], best_row = all_rows[0];
            for (int i = 1; i < L::width; ++i) {
                const bool better = all_merits[i] > best || (all_merits[i] == best && all_rows[i] > best_row);
                best = better ? all_merits[i] : best;
                best_row = better ? all_rows[i] : best_row;
            }
            return static_cast<int>(best_row);
        }
    };

    static D merits(D scale, D v) noexcept { return compared(scale * magnitude(v)); }
    static D exchanged_scale(M here, const double* scale, double upper, auto count) noexcept
    {
        return L::select(here, L::set(upper), R::load(scale, count));
    }

    static int search_first(const double* column, int rows, const double* scale) noexcept
    {
        Search search(0);
        R::each(0, rows, [&](int i, auto count) {
            search.look(merits(R::load(scale + i, count), R::load(column + i, count)), i, count);
        });
        return search.result();
    }

    // A pivot's step: exchanges the rows j and pivot_row of column and of the Later ones behind it, divides column
    // below its element j, takes it off the later ones and searches the next for its pivot. The exchange happens in
    // registers and vectors start at the same rows for every j: a vector that has just been stored in parts would be
    // slow to load.
    template <int Later>
    static int eliminate(double* column, std::ptrdiff_t stride, int j, int pivot_row, int rows, double* scale) noexcept
    {
        D upper[Later + 1], pivots[Later + 1];
#pragma GCC unroll 8
        for (int k = 0; k <= Later; ++k) {
            upper[k] = L::set(column[j + k * stride]);
            pivots[k] = L::set(column[pivot_row + k * stride]);
        }
        if (is_zero(column[pivot_row]))
            pivots[0] = L::set(1e-20);
        const double upper_scale = scale[j];
        Search search(j + 1);
        const auto exchanged = [&](M here, const double* p, int k, auto count) {
            return L::select(here, upper[k], R::load(p + k * stride, count));
        };
        const auto equal = [](D a, D b) { return L::both(L::less_equal(a, b), L::less_equal(b, a)); };

        const int first = j / L::width * L::width; // the rows from here to j are done with
        const auto start = [&](auto count) {
            const D row = L::set(j - first);
            const M here = equal(search.lanes, L::set(pivot_row - first)), diagonal = equal(search.lanes, row);
            const M below = L::both(L::less(row, search.lanes), L::less(search.lanes, L::set(count)));
            const D v = exchanged(here, column + first, 0, count);
            const D ratio = L::select(below, v, L::set(0.0)) / pivots[0];
            R::store(column + first, L::select(below, ratio, L::select(diagonal, pivots[0], v)), count);
#pragma GCC unroll 8
            for (int k = 1; k <= Later; ++k) {
                const D old = exchanged(here, column + first, k, count);
                const D w = L::select(below, old - ratio * pivots[k], L::select(diagonal, pivots[k], old));
                R::store(column + first + k * stride, w, count);
                if (k == 1) {
                    const D m = merits(exchanged_scale(here, scale + first, upper_scale, count), w);
                    search.keep(L::both(below, L::less_equal(search.merit, m)), m, first);
                }
            }
        };
        if (rows - first >= L::width)
            start(typename R::Full());
        else
            start(rows - first);
        R::each(first + L::width, rows, [&](int i, auto count) {
            const M here = equal(search.lanes, L::set(pivot_row - i));
            const D ratio = exchanged(here, column + i, 0, count) / pivots[0];
            R::store(column + i, ratio, count);
#pragma GCC unroll 8
            for (int k = 1; k <= Later; ++k) {
                const D w = exchanged(here, column + i, k, count) - ratio * pivots[k];
                R::store(column + i + k * stride, w, count);
                if (k == 1)
                    search.look(merits(exchanged_scale(here, scale + i, upper_scale, count), w), i, count);
            }
        });
        scale[pivot_row] = upper_scale; // the pivot's own is not needed any more
        return Later > 0 ? search.result() : 0;
    }

    using EliminationKernel = int (*)(double*, std::ptrdiff_t, int, int, int, double*) noexcept;
    static constexpr EliminationKernel s_eliminate[s_panel] = {
        eliminate<0>, eliminate<1>, eliminate<2>, eliminate<3>, eliminate<4>, eliminate<5>, eliminate<6>, eliminate<7>,
    };

    static bool is_zero(double v) noexcept
    {
        return !L::any(L::any_bit(L::as_bits(magnitude(compared(L::set(v))))));
    }

    static void factor_panel(Part a, int rows, int cols, double* scale, int* pivots) noexcept
    {
        int row = search_first(a.data, rows, scale);
        for (int j = 0; j < cols; ++j) {
            pivots[j] = row;
            for (int k = 0; k < j; ++k) {
                double* column = a.data + k * a.stride;
                const double upper = column[j];
                column[j] = column[row];
                column[row] = upper;
            }
            row = s_eliminate[cols - 1 - j](a.data + j * a.stride, a.stride, j, row, rows, scale);
        }
    }

    // A lane for each column of b.
    static void solve_lower(ConstPart l, Part b, int cols) noexcept
    {
        for (int j = 0; j < cols; j += L::width) {
            double* at[L::width];
            for (int lane = 0; lane < L::width; ++lane)
                at[lane] = b.data + (j + lane < cols ? j + lane : j) * b.stride;
            D rows[s_panel / L::width][L::width];
            const auto row = [&rows](int i) -> D& { return rows[i / L::width][i % L::width]; };
#pragma GCC unroll 8
            for (int i = 0; i < s_panel; i += L::width) {
                for (int lane = 0; lane < L::width; ++lane)
                    row(i + lane) = L::load(at[lane] + i);
                L::transpose(rows[i / L::width]);
            }
#pragma GCC unroll 8
            for (int k = 0; k < s_panel; ++k)
#pragma GCC unroll 8
                for (int i = k + 1; i < s_panel; ++i)
                    row(i) = row(i) - L::set(l.data[i + k * l.stride]) * row(k);
#pragma GCC unroll 8
            for (int i = 0; i < s_panel; i += L::width) {
                L::transpose(rows[i / L::width]);
                for (int lane = 0; lane < L::width; ++lane)
                    L::store(at[lane] + i, row(i + lane));
            }
        }
    }

    static void residual(double* r, const double* a, int n, const double* x, const double* b) noexcept
    {
        for (int i = 0; i < n; ++i)
            r[i] = -b[i];
        Columns<L, true>::take(r, {a, n}, x, 1, n, n);
    }

    static constexpr SolveKernels kernels = {copy_and_measure,     factor_panel, solve_lower,
                                             Substitution<L>::run, residual,     solve_on_stack<L>};
};

} // namespace qmml::matrix
