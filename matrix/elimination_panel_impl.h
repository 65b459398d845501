// Steps in panels. See elimination_kernels_impl.h for who may include this.
#pragma once

#include "matrix/elimination_search_impl.h"

namespace qmml::matrix {

template <class L>
struct PanelSteps {
    using D = typename L::D;
    using Search = PivotSearch<L>;

    // Takes Count steps from `first` on; the largest magnitude of a row that is not used yet.
    template <int Count>
    static double take_steps(const Elimination& e, int column, int first) noexcept
    {
        const std::int64_t padded = e.padded;
        double* const x = e.columns + column * e.stride;
        const double* const m = e.multiples + first * padded;
        const double* const magnitude = e.magnitude;
        D factors[Count + 1];
        for (int t = 0; t < Count; ++t)
            factors[t] = L::set(e.pivot_row[(first + t) * padded + column]);
        const auto reduce = [=](D v, std::int64_t i) {
            for (int t = 0; t < Count; ++t)
                v = v - factors[t] * L::load(m + t * padded + i);
            return v;
        };
        const auto step = [=](std::int64_t i) {
            const D v = reduce(L::load(x + i), i);
            if constexpr (Count > 0)
                L::store(x + i, v);
            return L::as_number(L::as_bits(v) & L::as_bits(L::load(magnitude + i)));
        };
        D even = L::set(0.0), odd = even; // two, so that a maximum need not wait for the one before
        const std::int64_t rows = e.rows;
        std::int64_t i = 0;
        for (; i + 2 * L::width <= rows; i += 2 * L::width) {
            even = L::larger(step(i), even);
            odd = L::larger(step(i + L::width), odd);
        }
        for (; i < rows; i += L::width) {
            const D v = reduce(Search::load_rows(e, x, i), i);
            if constexpr (Count > 0)
                Search::store_rows(e, x, i, v);
            even = L::larger(Search::magnitude_of(e, i, v), even);
        }
        return L::largest_of(L::larger(even, odd));
    }

    static double take_pending_steps(const Elimination& e, int column, int first) noexcept
    {
        for (; e.steps - first > 4; first += 4)
            take_steps<4>(e, column, first);
        switch (e.steps - first) {
        case 0: return take_steps<0>(e, column, first);
        case 1: return take_steps<1>(e, column, first);
        case 2: return take_steps<2>(e, column, first);
        case 3: return take_steps<3>(e, column, first);
        default: return take_steps<4>(e, column, first);
        }
    }

    // The rows of the pivots of pending steps do not take their own step nor those before it.
    static void restore_pivot_rows(const Elimination& e, int column, int first) noexcept
    {
        for (int t = first; t < e.steps; ++t) {
            const int row = e.pivots[t];
            double v = e.pivot_row[t * e.padded + column];
            for (int u = t + 1; u < e.steps; ++u)
                v -= e.pivot_row[u * e.padded + column] * e.multiples[u * e.padded + row];
            e.columns[column * e.stride + row] = v;
        }
    }

    static void enter(const Elimination& e, int column, double largest) noexcept
    {
        e.applied[column] = e.steps;
        e.largest[column] = e.use[column] == Use::none ? largest : -1.0;
    }

    static void catch_up(const Elimination& e, int column) noexcept
    {
        const int first = static_cast<int>(e.applied[column]);
        const double largest = take_pending_steps(e, column, first);
        restore_pivot_rows(e, column, first);
        enter(e, column, largest);
    }

    // Columns by the number of steps that they lag behind, in chains.
    struct Laggards {
        int heads[s_longest_panel + 1];
    };

    static Laggards columns_at_least(const Elimination& e, double greatest) noexcept
    {
        const double* const largest = e.largest;
        const int* const listed = e.listed;
        int* const candidates = e.candidates;
        int count = 0;
        for (int q = 0; q < e.listed_count; ++q) { // without a jump: which columns it takes cannot be guessed
            const int j = listed[q];
            candidates[count] = j;
            count += largest[j] < greatest ? 0 : 1; // a bound that is a NaN decides nothing
        }
        Laggards laggards;
        for (int& head : laggards.heads)
            head = -1;
        for (int q = 0; q < count; ++q) {
            const int j = candidates[q];
            int& head = laggards.heads[e.steps - static_cast<int>(e.applied[j])];
            e.next[j] = head;
            head = j;
        }
        return laggards;
    }

    template <int Count>
    static double catch_up_chain(const Elimination& e, const Laggards& laggards, double greatest) noexcept
    {
        for (int j = laggards.heads[Count]; j >= 0; j = e.next[j]) {
            if (e.largest[j] < greatest)
                continue;
            const double largest = take_steps<Count>(e, j, e.steps - Count);
            restore_pivot_rows(e, j, e.steps - Count);
            enter(e, j, largest);
            greatest = largest > greatest ? largest : greatest;
        }
        return greatest;
    }

    // Brings those columns up to date that may hold the largest element.
    static Pivot search(const Elimination& e) noexcept
    {
        double greatest = Search::largest_of_columns(e);
        if (e.steps == 0)
            return Search::find(e, greatest);
        // The most promising one first, so that few others have to follow.
        const int promising = Search::last_column(e, greatest);
        const bool is_there = greatest >= 0.0; // else all are used, or the bounds are NaNs
        if (is_there)
            catch_up(e, promising);
        greatest = is_there ? e.largest[promising] : 0.0;
        const Laggards laggards = columns_at_least(e, greatest);
        for (int j = laggards.heads[0]; j >= 0; j = e.next[j])
            greatest = e.largest[j] > greatest ? e.largest[j] : greatest;
        greatest = catch_up_chain<1>(e, laggards, greatest);
        greatest = catch_up_chain<2>(e, laggards, greatest);
        greatest = catch_up_chain<3>(e, laggards, greatest);
        greatest = catch_up_chain<4>(e, laggards, greatest);
        for (int count = 5; count <= e.steps; ++count)
            for (int j = laggards.heads[count]; j >= 0; j = e.next[j])
                if (!(e.largest[j] < greatest)) {
                    catch_up(e, j);
                    greatest = e.largest[j] > greatest ? e.largest[j] : greatest;
                }
        return Search::find(e, greatest);
    }

    // Takes the pivot row's elements through the pending steps, divides them, and raises the bounds: no multiple of a
    // row that is not used yet is larger than the pivot. Factor and summand cover the rounding of step and bound.
    static void divide_row(const Elimination& e, double pivot, int row) noexcept
    {
        const auto sign = L::bits(0x7fffffffffffffffu);
        const D divisor = L::set(pivot), most = L::as_number(L::as_bits(divisor) & sign);
        double* const values = e.pivot_row + e.steps * e.padded;
        for (std::int64_t j = 0; j < e.n; j += L::width) {
            const D applied = L::load(e.applied + j);
            D v = L::load(values + j);
            for (int t = 0; t < e.steps; ++t) {
                const D next = v - L::load(e.pivot_row + t * e.padded + j) * L::set(e.multiples[t * e.padded + row]);
                v = L::select(L::less_equal(applied, L::set(t)), next, v);
            }
            v = v / divisor;
            L::store(values + j, v);
            const D growth = L::as_number(L::as_bits(v) & sign) * most;
            const D largest = L::load(e.largest + j);
            const D bound = (largest + growth) * L::set(1.0 + 0x1p-48) + L::set(1e-300);
            L::store(e.largest + j, L::select(L::less(largest, L::set(0.0)), largest, bound));
        }
    }

    static Pivot step(Elimination& e, const Pivot& pivot) noexcept
    {
        const int k = e.steps, c = pivot.column, r = pivot.row;
        double* const m = e.multiples + k * e.padded;
        double* const pivot_column = e.columns + c * e.stride;
        for (std::int64_t i = 0; i < e.rows; i += L::width) {
            L::store(m + i, Search::load_rows(e, pivot_column, i));
            Search::store_rows(e, pivot_column, i, L::set(0.0));
        }
        double* const row = e.pivot_row + k * e.padded;
        for (int q = 0; q < e.listed_count; ++q) {
            const int j = e.listed[q];
            double* const x = e.columns + j * e.stride;
            row[j] = x[r];
            x[r] = x[c];
        }
        row[c] = 1.0;
        e.applied[c] = k;
        e.largest[c] = -1.0;
        divide_row(e, pivot.value, r);
        for (int t = 0; t <= k; ++t) {
            double* const multiples = e.multiples + t * e.padded;
            const double of_row = multiples[r];
            multiples[r] = multiples[c];
            multiples[c] = of_row;
        }
        e.magnitude[c] = 0.0;
        e.use[c] = Use::in_panel;
        e.pivots[k] = c;
        e.steps = k + 1;
        if (e.steps == s_longest_panel)
            close(e);
        return search(e);
    }

    // Tiles of columns that were used before the panel: nothing but the steps, all of them.
    static constexpr int s_tile = 4;
    static constexpr int s_rows = 128; // their multiples stay in the first cache

    static void take_panel(const Elimination& e, const int* tile, std::int64_t from, std::int64_t to) noexcept
    {
        double* x[s_tile];
        for (int q = 0; q < s_tile; ++q)
            x[q] = e.columns + tile[q] * e.stride;
        std::int64_t i = from;
        for (; i + 2 * L::width <= to; i += 2 * L::width) {
            D v[s_tile], w[s_tile];
            for (int q = 0; q < s_tile; ++q) {
                v[q] = L::load(x[q] + i);
                w[q] = L::load(x[q] + i + L::width);
            }
            for (int t = 0; t < e.steps; ++t) {
                const double* const m = e.multiples + t * e.padded + i;
                const double* const row = e.pivot_row + t * e.padded;
                const D first = L::load(m), second = L::load(m + L::width);
                for (int q = 0; q < s_tile; ++q) {
                    const D factor = L::set(row[tile[q]]);
                    v[q] = v[q] - factor * first;
                    w[q] = w[q] - factor * second;
                }
            }
            for (int q = 0; q < s_tile; ++q) {
                L::store(x[q] + i, v[q]);
                L::store(x[q] + i + L::width, w[q]);
            }
        }
        for (; i < to; i += L::width)
            for (int q = 0; q < s_tile; ++q) {
                D v = Search::load_rows(e, x[q], i);
                for (int t = 0; t < e.steps; ++t)
                    v = v - L::set(e.pivot_row[t * e.padded + tile[q]]) * L::load(e.multiples + t * e.padded + i);
                Search::store_rows(e, x[q], i, v);
            }
    }

    // The few columns that are left over make no tile.
    static void close_used_columns(const Elimination& e) noexcept
    {
        for (std::int64_t from = 0; from < e.rows; from += s_rows) {
            const std::int64_t to = from + s_rows < e.rows ? from + s_rows : e.rows;
            int tile[s_tile], held = 0;
            for (int j = 0; j < e.n; ++j) {
                if (e.use[j] != Use::before_panel)
                    continue;
                tile[held++] = j;
                if (held < s_tile)
                    continue;
                held = 0;
                take_panel(e, tile, from, to);
                if (to == e.rows)
                    for (const int column : tile) {
                        restore_pivot_rows(e, column, 0);
                        e.applied[column] = e.steps;
                    }
            }
        }
    }

    static void close(Elimination& e) noexcept
    {
        if (e.inverse)
            close_used_columns(e);
        for (int q = 0; q < e.listed_count; ++q) {
            const int j = e.listed[q];
            if (e.applied[j] < e.steps && (e.inverse || e.use[j] == Use::none))
                catch_up(e, j);
        }
        int kept = 0;
        for (int q = 0; q < e.listed_count; ++q)
            if (e.inverse || e.use[e.listed[q]] == Use::none)
                e.listed[kept++] = e.listed[q];
        e.listed_count = kept;
        for (int j = 0; j < e.n; ++j) {
            e.applied[j] = 0.0;
            if (e.use[j] == Use::in_panel)
                e.use[j] = Use::before_panel;
        }
        e.steps = 0;
    }

    static Pivot begin(Elimination& e) noexcept
    {
        for (int j = 0; j < e.n; ++j)
            catch_up(e, j);
        return search(e);
    }
};

} // namespace qmml::matrix
