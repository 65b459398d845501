// Every step at once, in columns too long for registers, for a determinant: what was used does not matter any more. See
// elimination_kernels_impl.h for who may include this.
#pragma once

#include "matrix/elimination_search_impl.h"

namespace qmml::matrix {

template <class L>
struct LongSteps {
    using D = typename L::D;
    using Search = PivotSearch<L>;

    static Pivot begin(Elimination& e) noexcept
    {
        double greatest = 0.0;
        for (int j = 0; j < e.n; ++j) {
            D top = L::set(0.0);
            for (std::int64_t i = 0; i < e.padded; i += L::width)
                top = L::larger(Search::magnitude_of(e, i, L::load(e.columns + j * e.stride + i)), top);
            e.largest[j] = L::largest_of(top);
            greatest = e.largest[j] > greatest ? e.largest[j] : greatest;
        }
        return Search::find(e, greatest);
    }

    static void take_out(Elimination& e, int column) noexcept
    {
        int* const listed = e.listed;
        const int count = --e.listed_count;
        int kept = 0;
        for (int q = 0; q < count; ++q) { // without a jump
            kept += listed[q] == column ? 1 : 0;
            listed[q] = listed[q + kept];
        }
        e.use[column] = Use::before_panel;
        e.largest[column] = -1.0;
        e.magnitude[column] = 0.0;
    }

    // Several columns share what is loaded of the multiples, and a maximum need not wait for the one before.
    template <int Columns>
    static void reduce(const Elimination& e, int q, double (&largest)[Columns]) noexcept
    {
        double* x[Columns];
        D factors[Columns], top[Columns];
        for (int t = 0; t < Columns; ++t) {
            x[t] = e.columns + e.listed[q + t] * e.stride;
            factors[t] = L::set(e.pivot_row[q + t]);
            top[t] = L::set(0.0);
        }
        const double* const multiples = e.multiples;
        const double* const magnitude = e.magnitude;
        const std::int64_t rows = e.padded;
        for (std::int64_t i = 0; i < rows; i += L::width) {
            const D multiple = L::load(multiples + i);
            const auto keep = L::as_bits(L::load(magnitude + i));
            for (int t = 0; t < Columns; ++t) {
                const D v = L::load(x[t] + i) - factors[t] * multiple;
                L::store(x[t] + i, v);
                top[t] = L::larger(L::as_number(L::as_bits(v) & keep), top[t]);
            }
        }
        for (int t = 0; t < Columns; ++t) {
            largest[t] = L::largest_of(top[t]);
            e.largest[e.listed[q + t]] = largest[t];
        }
    }

    template <int Columns>
    static double reduce_from(const Elimination& e, int& q, double greatest) noexcept
    {
        for (; q + Columns <= e.listed_count; q += Columns) {
            double largest[Columns];
            reduce<Columns>(e, q, largest);
            for (const double candidate : largest)
                greatest = candidate > greatest ? candidate : greatest;
        }
        return greatest;
    }

    static Pivot step(Elimination& e, const Pivot& pivot) noexcept
    {
        const int r = pivot.row, c = pivot.column;
        const double* const pivot_column = e.columns + c * e.stride;
        for (std::int64_t i = 0; i < e.padded; i += L::width)
            L::store(e.multiples + i, L::load(pivot_column + i));
        take_out(e, c);
        for (int q = 0; q < e.listed_count; ++q) {
            double* const x = e.columns + e.listed[q] * e.stride;
            e.pivot_row[q] = x[r];
            x[r] = x[c];
        }
        e.multiples[r] = pivot_column[c];
        const D divisor = L::set(pivot.value);
        for (std::int64_t q = 0; q < e.listed_count; q += L::width)
            L::store(e.pivot_row + q, L::load(e.pivot_row + q) / divisor);
        int q = 0;
        double greatest = reduce_from<4>(e, q, 0.0);
        greatest = reduce_from<1>(e, q, greatest);
        return Search::find(e, greatest);
    }
};

} // namespace qmml::matrix
