// Where the pivot is. See elimination_kernels_impl.h for who may include this.
#pragma once

#include "core/lanes.h"
#include "matrix/elimination_kernels.h"

namespace qmml::matrix {

template <class L>
struct PivotSearch {
    using D = typename L::D;

    static D magnitude_of(const Elimination& e, std::int64_t i, D v) noexcept
    {
        return L::as_number(L::as_bits(v) & L::as_bits(L::load(e.magnitude + i)));
    }

    // Some of a column's rows from i on, where at least one is there.
    static D load_rows(const Elimination& e, const double* x, std::int64_t i) noexcept
    {
        return i + L::width <= e.rows ? L::load(x + i) : L::load_first(x + i, static_cast<int>(e.rows - i));
    }

    static void store_rows(const Elimination& e, double* x, std::int64_t i, D v) noexcept
    {
        if (i + L::width <= e.rows)
            L::store(x + i, v);
        else
            L::store_first(x + i, v, static_cast<int>(e.rows - i));
    }

    // Of the magnitudes or bounds by column, NaNs left out.
    static double largest_of_columns(const Elimination& e) noexcept
    {
        D top = L::set(-1.0);
        for (std::int64_t j = 0; j < e.n; j += L::width)
            top = L::larger(L::load(e.largest + j), top);
        return L::largest_of(top);
    }

    // The last column with that much; there is one.
    static int last_column(const Elimination& e, double least) noexcept
    {
        std::int64_t from = (e.n - 1) / L::width * L::width;
        int lane = -1;
        for (; lane < 0; from -= L::width)
            lane = L::last_of(L::less_equal(L::set(least), L::load(e.largest + from)));
        return static_cast<int>(from) + L::width + lane;
    }

    // The last row of the column, after the given one, that holds the magnitude, or that one.
    static int last_row(const Elimination& e, int column, double greatest, int after) noexcept
    {
        const double* const x = e.columns + column * e.stride;
        const D wanted = L::set(greatest);
        for (std::int64_t i = (e.n - 1) / L::width * L::width; i + L::width - 1 > after; i -= L::width) {
            const int lane = L::last_of(L::less_equal(wanted, magnitude_of(e, i, load_rows(e, x, i))));
            if (lane >= 0)
                return static_cast<int>(i) + lane > after ? static_cast<int>(i) + lane : after;
        }
        return after;
    }

    // The last one in the order of rows, then columns, that is not used: in the search by vectors it would look like
    // zero.
    static Pivot last_zero(const Elimination& e) noexcept
    {
        Pivot pivot = {-1, -1, 0.0};
        for (int j = e.n - 1; j >= 0; --j)
            for (int i = e.n - 1; e.use[j] == Use::none && i > pivot.row; --i)
                if (e.use[i] == Use::none && e.columns[j * e.stride + i] == 0.0)
                    pivot = {i, j, 0.0};
        return pivot;
    }

    // Takes an equal from the column when it stands in a later row. Columns are offered the last one first.
    static void improve(const Elimination& e, int column, double greatest, Pivot& pivot) noexcept
    {
        const int row = last_row(e, column, greatest, pivot.row);
        if (row > pivot.row)
            pivot = {row, column, e.columns[column * e.stride + row]};
    }

    // The last one in the order of rows, then columns, among equals. Columns that may hold it are up to date.
    static Pivot find(const Elimination& e, double greatest) noexcept
    {
        if (!(greatest > 0.0))
            return last_zero(e);
        Pivot pivot = {-1, -1, 0.0};
        const D wanted = L::set(greatest);
        for (std::int64_t from = (e.n - 1) / L::width * L::width; from >= 0; from -= L::width)
            for (int lane = L::last_of(L::less_equal(wanted, L::load(e.largest + from))); lane >= 0; --lane)
                if (e.largest[from + lane] >= greatest)
                    improve(e, static_cast<int>(from) + lane, greatest, pivot);
        return pivot;
    }
};

} // namespace qmml::matrix
