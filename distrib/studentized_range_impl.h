// The sum over the grid as a template over lanes. Included by one source per instruction set: nothing in here may be
// instantiated for a type that two of those sources share.
#pragma once

#include "core/elementary_kernels.h"
#include "distrib/normal.h"
#include "distrib/studentized_range.h"

namespace qmml {

template <class L>
class StudentizedRangeSum {
public:
    static double probability(const StudentizedRangeGrid& grid) noexcept { return StudentizedRangeSum(grid).sum(); }

private:
    static constexpr double s_inner_cut = 0.00003, s_row_cut = 0.0001;
    static constexpr int s_fewest_inner = 3, s_fewest_rows = 7, s_most_rows = 15;
    static constexpr int s_visits = 2 * s_most_rows - 1, s_chunk = 8; // of points, computed together

    explicit StudentizedRangeSum(const StudentizedRangeGrid& grid) noexcept : m_grid(grid) {}

    double sum() noexcept
    {
        for (int first = 0; first < s_visits; first += s_chunk) {
            const Visits visits = visits_from(first);
            for (int i = 0; i < s_chunk && first + i < s_visits; ++i)
                if (visit(visits, first, i))
                    return m_total;
        }
        return m_total;
    }

    // Points of the normal variable, computed together: the middle, then one on either side of it, row by row.
    struct Visits {
        double point[s_chunk], tail[s_chunk], log_density[s_chunk], central[s_chunk];
    };

    static int row_of(int visit) noexcept { return (visit + 1) / 2 + 1; }

    Visits visits_from(int first) const noexcept
    {
        Visits v;
        for (int i = 0; i < s_chunk; ++i) {
            const double distance = (row_of(first + i) - 1) * m_grid.step;
            v.point[i] = (first + i) % 2 == 1 ? m_grid.start + distance : m_grid.start - distance;
            v.log_density[i] = m_grid.log_scale - 0.5 * v.point[i] * v.point[i];
        }
        for (int i = 0; i < s_chunk; i += L::width) {
            const auto point = L::load(v.point + i), tail = upper_tail(point);
            L::store(v.tail + i, tail);
            L::store(v.central + i, term(upper_tail(point - L::set(m_grid.q)) - tail, L::load(v.log_density + i)));
        }
        return v;
    }

    // True when the rows have become negligible on both sides.
    bool visit(const Visits& visits, int first, int i) noexcept
    {
        const int row = row_of(first + i);
        const bool may_end = row > s_fewest_rows;
        double value = 0;
        if (!(may_end && m_before_last <= s_row_cut)) // the same side's last row
            value = row_sum(row, visits, i);
        m_total += value;
        if (may_end && value <= s_row_cut && m_last <= s_row_cut)
            return true;
        m_before_last = m_last;
        m_last = value;
        return false;
    }

    double row_sum(int row, const Visits& visits, int visit) const noexcept
    {
        double sum = visits.central[visit], terms[s_chunk];
        for (int wing = 0; wing < m_grid.wings; ++wing)
            for (int first = 0; first < StudentizedRangeGrid::padded_wing; first += s_chunk) {
                inner_terms(terms, m_grid.scaled_q[wing] + first, m_grid.log_weight[wing] + first, visits, visit);
                if (add_wing(sum, terms, first, wing, row))
                    break;
            }
        return sum;
    }

    // The terms in their order, up to the one that is negligible. The points of both wings are counted through, so
    // that the least number of them is the first wing's alone.
    static bool add_wing(double& sum, const double* terms, int first, int wing, int row) noexcept
    {
        for (int i = 0; i < s_chunk && first + i < StudentizedRangeGrid::wing_size; ++i) {
            sum += terms[i];
            const int index = first + i + 1 + wing * StudentizedRangeGrid::wing_size;
            if (terms[i] <= s_inner_cut && (index > s_fewest_inner || row > s_fewest_rows))
                return true;
        }
        return false;
    }

    void inner_terms(double* terms, const double* scaled_q, const double* log_weight, const Visits& visits,
                     int visit) const noexcept
    {
        const auto point = L::set(visits.point[visit]), tail = L::set(visits.tail[visit]);
        const auto log_density = L::set(visits.log_density[visit]);
        for (int i = 0; i < s_chunk; i += L::width)
            L::store(terms + i,
                     term(upper_tail(point - L::load(scaled_q + i)) - tail, log_density + L::load(log_weight + i)));
    }

    // The probability of a range to the power r - 1, weighted; 0 where rounding leaves no range.
    typename L::D term(typename L::D range, typename L::D log_weight) const noexcept
    {
        const auto zero = L::set(0);
        const auto positive = L::less(zero, range);
        const auto logarithm = elementary::log<L>(L::select(positive, range, L::set(1)));
        return L::select(positive, elementary::exp<L>(log_weight + L::set(m_grid.power) * logarithm), zero);
    }

    static typename L::D upper_tail(typename L::D z) noexcept { return L::set(1) - normal_lower_lane<L>(z); }

    const StudentizedRangeGrid& m_grid;
    double m_total = 0, m_last = 1, m_before_last = 1;
};

} // namespace qmml
