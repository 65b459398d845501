// What the elimination works on: the caller's matrix itself for an inverse, or a copy whose columns begin on cache
// lines and are padded, so that the steps run over whole vectors.
#pragma once

#include "core/block.h"
#include "matrix/elimination_kernels.h"

#include <cstdint>

namespace qmml::matrix {

class EliminationWork {
public:
    // The inverse is to replace a; for a determinant it is null.
    EliminationWork(const double* a, int n, double* inverse) noexcept;
    EliminationWork(const EliminationWork&) = delete;
    EliminationWork& operator=(const EliminationWork&) = delete;
    ~EliminationWork() = default;

    explicit operator bool() const noexcept { return m_elimination.columns != nullptr; }
    Elimination& elimination() noexcept { return m_elimination; }

    void record_exchange(int step, const Pivot& pivot) noexcept
    {
        m_rows[step] = pivot.row;
        m_columns[step] = pivot.column;
    }

    // In a determinant, between panels: leaves the used rows and columns out once that saves enough of the work to
    // come. The pivot that was found stays the same element.
    void drop_used(Pivot& pivot) noexcept;

    // In a determinant, without panels.
    void write_unused(double* a) const noexcept;

    // Here the columns change places as the rows did, the last exchange first.
    void write_inverse(double* a) noexcept;
    void write_as_it_is(double* a) const noexcept;

private:
    static constexpr int s_largest_on_stack = 16;
    static constexpr int s_line = 8; // numbers on a cache line

    void mark_unused() noexcept;

    Elimination m_elimination;
    int* m_rows; // of the pivots, by step
    int* m_columns;
    Block<double> m_numbers;
    Block<int> m_integers;
    Block<Use> m_uses;
    alignas(64) double m_few_numbers[(s_largest_on_stack + 5) * s_largest_on_stack];
    int m_few_integers[5 * s_largest_on_stack];
    Use m_few_uses[s_largest_on_stack];
};

} // namespace qmml::matrix
