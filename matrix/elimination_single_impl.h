// Every step at once, a column in one go: exchange, division, reduction and search. What does not change from column to
// column stays in registers, or at least in its place: the length of a column, in cache lines, is a constant. No vector
// is loaded soon after a part of it was stored, since it would have to wait. See elimination_kernels_impl.h for who may
// include this.
#pragma once

#include "matrix/elimination_search_impl.h"

namespace qmml::matrix {

inline constexpr double s_numbers[] = {0,  1,  2,  3,  4,  5,  6,  7,  8,  9,  10, 11, 12, 13, 14, 15,
                                       16, 17, 18, 19, 20, 21, 22, 23, 24, 25, 26, 27, 28, 29, 30, 31,
                                       32, 33, 34, 35, 36, 37, 38, 39, 40, 41, 42, 43, 44, 45, 46, 47,
                                       48, 49, 50, 51, 52, 53, 54, 55, 56, 57, 58, 59, 60, 61, 62, 63};

template <class L, int Lines>
struct SingleSteps {
    using D = typename L::D;
    using M = typename L::M;
    using Search = PivotSearch<L>;

    static constexpr int s_rows = 8 * Lines; // with the padding
    static constexpr int s_vectors = s_rows / L::width;
    static_assert(s_rows <= 64);

    // Only the last cache line of a column may end before its vectors do. What is not there is never used.
    static bool is_there(const Elimination& e, int v) noexcept { return v * L::width < e.rows; }

    static D load(const Elimination& e, const double* x, int v) noexcept
    {
        if (v * L::width < s_rows - 8)
            return L::load(x + v * L::width);
        return is_there(e, v) ? Search::load_rows(e, x, v * L::width) : L::set(0.0);
    }

    static void store(const Elimination& e, double* x, int v, D value) noexcept
    {
        if (v * L::width < s_rows - 8)
            L::store(x + v * L::width, value);
        else if (is_there(e, v))
            Search::store_rows(e, x, v * L::width, value);
    }

    static D masked(D v, D mask) noexcept { return L::as_number(L::as_bits(v) & L::as_bits(mask)); }

    // The pivot column as multiples, and what stands still while the columns pass.
    struct Step {
        D multiples[s_vectors], keep[s_vectors];
        int count; // of unused columns, which are listed first
    };

    // Takes the pivot's column and row out of the search and makes the column that of a unit matrix.
    static Step prepare(Elimination& e, const Pivot& pivot) noexcept
    {
        Step step;
        double* const column = e.columns + pivot.column * e.stride;
        const D zero = L::set(0.0), place = L::set(pivot.column), exchanged = L::set(pivot.row);
        for (int v = 0; v < s_vectors; ++v) {
            const D row = L::load(s_numbers + v * L::width);
            step.multiples[v] = load(e, column, v);
            step.keep[v] = L::select(L::differ(row, place), L::load(e.magnitude + v * L::width), zero);
            L::store(e.magnitude + v * L::width, step.keep[v]);
            store(e, column, v, L::select(L::differ(row, exchanged), zero, L::set(1.0)));
        }
        e.use[pivot.column] = Use::before_panel;
        step.count = --e.listed_count;
        for (int q = e.place; q < step.count; ++q)
            e.listed[q] = e.listed[q + 1];
        e.listed[step.count] = pivot.column;
        return step;
    }

    static Pivot found(Elimination& e, const Pivot& pivot) noexcept
    {
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
            for (int v = 0; v < s_vectors; ++v)
                top = L::larger(masked(load(e, e.columns + j * e.stride, v), L::load(e.magnitude + v * L::width)), top);
            const double magnitude = L::largest_of(top);
            e.largest[j] = magnitude;
            greatest = magnitude > greatest ? magnitude : greatest;
        }
        return found(e, Search::find(e, greatest));
    }

    // Reduces a column as if nothing were exchanged, then mends the two rows. The largest magnitude not used yet in
    // the rows to keep.
    template <bool Measure>
    static double reduce(const Elimination& e, double* x, const Step& step, const Pivot& pivot,
                         double multiple_of_exchanged) noexcept
    {
        const double p = x[pivot.row] / pivot.value;
        const double exchanged = x[pivot.column] - p * multiple_of_exchanged;
        const D factor = L::set(p);
        D top[2] = {L::set(0.0), L::set(0.0)}; // two, so that a maximum need not wait for the one before
        for (int v = 0; v < s_vectors; ++v) {
            const D value = load(e, x, v) - factor * step.multiples[v];
            store(e, x, v, value);
            if constexpr (Measure)
                top[v % 2] = L::larger(masked(value, step.keep[v]), top[v % 2]);
        }
        x[pivot.row] = exchanged;
        x[pivot.column] = p;
        if constexpr (!Measure)
            return 0.0;
        const double most = L::largest_of(L::larger(top[0], top[1]));
        const double other = exchanged < 0.0 ? -exchanged : exchanged;
        return pivot.row != pivot.column && other > most ? other : most;
    }

    static Pivot step(Elimination& e, const Pivot& pivot) noexcept
    {
        const double multiple_of_exchanged = e.columns[pivot.column * e.stride + pivot.column];
        Step step = prepare(e, pivot);
        // What is exchanged is measured for itself.
        for (int v = 0; v < s_vectors; ++v)
            step.keep[v] =
                L::select(L::differ(L::load(s_numbers + v * L::width), L::set(pivot.row)), step.keep[v], L::set(0.0));
        double* const columns = e.columns;
        const std::int64_t stride = e.stride;
        double* const largest = e.largest;
        const int* const listed = e.listed;
        const int used = e.inverse ? e.n : step.count;
        largest[pivot.column] = -1.0;
        double greatest = 0.0;
        for (int q = 0; q < step.count; ++q) {
            const int j = listed[q];
            const double magnitude = reduce<true>(e, columns + j * stride, step, pivot, multiple_of_exchanged);
            largest[j] = magnitude;
            greatest = magnitude > greatest ? magnitude : greatest;
        }
        for (int q = step.count; q < used; ++q)
            reduce<false>(e, columns + listed[q] * stride, step, pivot, multiple_of_exchanged);
        return found(e, Search::find(e, greatest));
    }
};

// In short columns each row has a lane of its own, which remembers the last of the columns that hold the row's largest
// magnitude: what the order of the search asks for.
template <class L, int Lines>
struct ShortSteps : SingleSteps<L, Lines> {
    using D = typename L::D;
    using M = typename L::M;
    using Base = SingleSteps<L, Lines>;
    using Base::s_rows;
    using Base::s_vectors;
    using typename Base::Step;

    struct Rows {
        D most[s_vectors], place[s_vectors];

        Rows() noexcept
        {
            for (int v = 0; v < s_vectors; ++v)
                most[v] = place[v] = L::set(0.0);
        }
        void add(int v, D magnitude, D listed_place) noexcept
        {
            place[v] = L::select(L::less_equal(most[v], magnitude), listed_place, place[v]);
            most[v] = L::larger(magnitude, most[v]);
        }
    };

    static Pivot find(Elimination& e, const Rows& rows) noexcept
    {
        D top = rows.most[0];
        for (int v = 1; v < s_vectors; ++v)
            top = L::larger(rows.most[v], top);
        const double greatest = L::largest_of(top);
        if (!(greatest > 0.0))
            return Base::found(e, PivotSearch<L>::last_zero(e));
        double places[s_rows];
        int row = 0;
        for (int v = 0; v < s_vectors; ++v) {
            L::store(places + v * L::width, rows.place[v]);
            const int lane = L::last_of(L::less_equal(L::set(greatest), rows.most[v]));
            row = lane >= 0 ? v * L::width + lane : row;
        }
        e.place = static_cast<int>(places[row]);
        const int column = e.listed[e.place];
        return {row, column, e.columns[column * s_rows + row]};
    }

    static Pivot begin(Elimination& e) noexcept
    {
        Rows rows;
        for (int j = 0; j < e.n; ++j)
            for (int v = 0; v < s_vectors; ++v)
                rows.add(
                    v,
                    Base::masked(L::load(e.columns + j * s_rows + v * L::width), L::load(e.magnitude + v * L::width)),
                    L::set(s_numbers[j]));
        return find(e, rows);
    }

    static Pivot step(Elimination& e, const Pivot& pivot) noexcept
    {
        const int c = pivot.column, r = pivot.row;
        const double multiple_of_exchanged = e.columns[c * s_rows + c];
        Step step = Base::prepare(e, pivot);
        M stays[s_vectors], reduced[s_vectors];
        for (int v = 0; v < s_vectors; ++v) {
            const D row = L::load(s_numbers + v * L::width);
            stays[v] = L::differ(row, L::set(r));
            reduced[v] = L::differ(row, L::set(c));
            step.multiples[v] = L::select(stays[v], step.multiples[v], L::set(multiple_of_exchanged));
        }
        double* const columns = e.columns;
        const int* const listed = e.listed;
        const int used = e.inverse ? e.n : step.count;
        const double divisor = pivot.value;
        const auto reduce = [&](double* x, int v, D factor, D exchanged) {
            const D value = L::select(stays[v], L::load(x + v * L::width), exchanged) - factor * step.multiples[v];
            return L::select(reduced[v], value, factor);
        };
        Rows rows;
        for (int q = 0; q < step.count; ++q) {
            double* const x = columns + listed[q] * s_rows;
            const D factor = L::set(x[r] / divisor), exchanged = L::set(x[c]), place = L::set(s_numbers[q]);
            for (int v = 0; v < s_vectors; ++v) {
                const D value = reduce(x, v, factor, exchanged);
                L::store(x + v * L::width, value);
                rows.add(v, Base::masked(value, step.keep[v]), place);
            }
        }
        for (int q = step.count; q < used; ++q) {
            double* const x = columns + listed[q] * s_rows;
            const D factor = L::set(x[r] / divisor), exchanged = L::set(x[c]);
            for (int v = 0; v < s_vectors; ++v)
                L::store(x + v * L::width, reduce(x, v, factor, exchanged));
        }
        return find(e, rows);
    }
};

} // namespace qmml::matrix
