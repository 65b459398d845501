// Every step at once in columns too long for registers, for a determinant: nothing used matters any more. The pivot row
// is exchanged and divided first; then the columns pass, some at a time, each read and written once for reduction and
// search. See elimination_kernels_impl.h for who may include this.
#pragma once

#include "matrix/elimination_search_impl.h"

namespace qmml::matrix {

template <class L>
struct LongSteps {
    using D = typename L::D;
    using Search = PivotSearch<L>;

    // They share what is loaded of the multiples, and a maximum need not wait for the one before.
    static constexpr int s_columns = L::width;

    // From a place in the list on; the magnitudes are one column's in each vector.
    template <int Columns>
    static void reduce(const Elimination& e, int place, D* largest) noexcept
    {
        double* x[Columns];
        D factors[Columns], top[Columns];
        for (int t = 0; t < Columns; ++t) {
            x[t] = e.columns + e.listed[place + t] * e.stride;
            factors[t] = L::set(e.pivot_row[place + t]);
            top[t] = L::set(0.0);
        }
        const double* const multiples = e.multiples;
        const auto all_but_sign = L::bits(0x7fffffffffffffffu);
        const std::int64_t rows = e.rows;
        for (std::int64_t i = 0; i < rows; i += L::width) {
            const D multiple = L::load(multiples + i);
            for (int t = 0; t < Columns; ++t) {
                const D v = L::load(x[t] + i) - factors[t] * multiple;
                L::store(x[t] + i, v);
                top[t] = L::larger(L::as_number(L::as_bits(v) & all_but_sign), top[t]);
            }
        }
        for (int t = 0; t < Columns; ++t)
            largest[t] = top[t];
    }

    // Each column of a vector's worth in its lane; -1 where the list has ended.
    static D reduce_group(const Elimination& e, int place) noexcept
    {
        D largest[L::width];
        int t = 0;
        for (; t + s_columns <= L::width && place + t + s_columns <= e.listed_count; t += s_columns)
            reduce<s_columns>(e, place + t, largest + t);
        for (; t < L::width && place + t < e.listed_count; ++t)
            reduce<1>(e, place + t, largest + t);
        for (; t < L::width; ++t)
            largest[t] = L::set(-1.0);
        L::transpose(largest);
        for (int half = L::width / 2; half > 0; half /= 2)
            for (t = 0; t < half; ++t)
                largest[t] = L::larger(largest[t], largest[t + half]);
        return largest[0];
    }

    // As PivotSearch::find, with the largest magnitudes by place in the list.
    static Pivot find(Elimination& e, double greatest) noexcept
    {
        Pivot pivot = {-1, -1, 0.0};
        if (!(greatest > 0.0))
            pivot = Search::last_zero(e);
        const D wanted = L::set(greatest);
        for (std::int64_t from = (e.listed_count - 1) / L::width * L::width; from >= 0 && greatest > 0.0;
             from -= L::width)
            for (int lane = L::last_of(L::less_equal(wanted, L::load(e.largest + from))); lane >= 0; --lane)
                if (e.largest[from + lane] >= greatest)
                    Search::improve(e, e.listed[from + lane], greatest, pivot);
        e.place = 0;
        while (e.place < e.listed_count && e.listed[e.place] != pivot.column)
            ++e.place;
        return pivot;
    }

    static Pivot begin(Elimination& e) noexcept
    {
        double greatest = 0.0;
        for (int j = 0; j < e.n; ++j) {
            D top = L::set(0.0);
            for (std::int64_t i = 0; i < e.rows; i += L::width)
                top = L::larger(Search::magnitude_of(e, i, L::load(e.columns + j * e.stride + i)), top);
            e.largest[j] = L::largest_of(top);
            greatest = e.largest[j] > greatest ? e.largest[j] : greatest;
        }
        return find(e, greatest);
    }

    static void take_out(Elimination& e, int column) noexcept
    {
        --e.listed_count;
        for (int q = e.place; q < e.listed_count; ++q)
            e.listed[q] = e.listed[q + 1];
        e.use[column] = Use::before_panel;
        e.magnitude[column] = 0.0;
    }

    static Pivot step(Elimination& e, const Pivot& pivot) noexcept
    {
        const int r = pivot.row, c = pivot.column;
        const double* const pivot_column = e.columns + c * e.stride;
        for (std::int64_t i = 0; i < e.rows; i += L::width)
            L::store(e.multiples + i, L::load(pivot_column + i));
        e.multiples[r] = pivot_column[c];
        e.multiples[c] = 0.0; // a used row stays zero, or a NaN, which no search sees
        take_out(e, c);
        for (int q = 0; q < e.listed_count; ++q) {
            double* const x = e.columns + e.listed[q] * e.stride;
            e.pivot_row[q] = x[r];
            x[r] = x[c];
            x[c] = 0.0;
        }
        const D divisor = L::set(pivot.value);
        for (int q = 0; q < e.listed_count; q += L::width)
            L::store(e.pivot_row + q, L::load(e.pivot_row + q) / divisor);
        D greatest = L::set(0.0);
        for (int q = 0; q < e.listed_count; q += L::width) {
            const D largest = reduce_group(e, q);
            L::store(e.largest + q, largest);
            greatest = L::larger(largest, greatest);
        }
        return find(e, L::largest_of(greatest));
    }
};

} // namespace qmml::matrix
