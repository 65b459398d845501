// The elimination for the inverse of a matrix so small that arranging it for vectors would take longer than the
// elimination.
#pragma once

#include "matrix/elimination_kernels.h"

#include <cmath>
#include <utility>

namespace qmml::matrix {

class SmallElimination {
public:
    static constexpr int s_largest = 6;

    // Works in place.
    SmallElimination(double* a, int n) noexcept : m_a(a), m_n(n), m_left(n)
    {
        for (int j = 0; j < n; ++j)
            m_order[j] = j;
    }

    // The last largest element in the order of rows, then columns.
    Pivot search() const noexcept
    {
        double greatest = 0.0;
        int row = -1, column = -1;
        for (int p = 0; p < m_left; ++p)
            for (int q = 0; q < m_left; ++q) {
                const double magnitude = std::fabs(at(m_order[p], m_order[q]));
                if (magnitude >= greatest) {
                    greatest = magnitude;
                    row = m_order[p];
                    column = m_order[q];
                }
            }
        return {row, column, row < 0 ? 0.0 : at(row, column)};
    }

    void step(const Pivot& pivot) noexcept
    {
        const int r = pivot.row, c = pivot.column;
        take_out(c);
        double multiples[s_largest];
        for (int i = 0; i < m_n; ++i)
            multiples[i] = std::exchange(at(i, c), 0.0);
        multiples[r] = multiples[c];
        at(r, c) = 1.0;
        for (int j = 0; j < m_n; ++j) {
            const double factor = at(r, j) / pivot.value;
            at(r, j) = at(c, j);
            at(c, j) = factor;
            for (int i = 0; i < m_n; ++i)
                if (i != c)
                    at(i, j) -= factor * multiples[i];
        }
    }

private:
    double& at(int i, int j) const noexcept { return m_a[j * m_n + i]; }

    // Those left keep their order; the others follow them.
    void take_out(int index) noexcept
    {
        int q = 0;
        while (m_order[q] != index)
            ++q;
        for (--m_left; q < m_left; ++q)
            m_order[q] = m_order[q + 1];
        m_order[m_left] = index;
    }

    double* const m_a;
    const int m_n;
    int m_left;
    int m_order[s_largest] = {};
};

} // namespace qmml::matrix
