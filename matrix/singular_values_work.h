// One singular value decomposition with the memory that it needs.
#pragma once

#include "core/block.h"
#include "matrix/bidiagonal_form.h"
#include "matrix/status.h"

#include <cstddef>
#include <cstdint>

namespace qmml::matrix {

// Of a matrix of rows x cols, both at least 1, made up with rows of zeros to at least cols rows. Up to an order of 16
// nothing is taken from the heap.
class SingularValuesWork {
public:
    enum class Result { values, vectors };

    SingularValuesWork(int rows, int cols, Result result) noexcept;
    SingularValuesWork(const SingularValuesWork&) = delete;
    SingularValuesWork& operator=(const SingularValuesWork&) = delete;

    Status decompose(const double* a) noexcept;

    // After a success; number k in descending order.
    double value(int k) const noexcept { return m_diagonal[k]; }
    const double* left(int k) const noexcept { return m_left + m_order[k] * m_left_stride; }
    // The vector is to be multiplied by the sign.
    const double* right(int k) const noexcept { return m_right + m_order[k] * m_right_stride; }
    double right_sign(int k) const noexcept { return m_sign[m_order[k]]; }

    // Room for cols x cols numbers, when the vectors from the left are no longer needed.
    double* left_room() noexcept { return m_left; }

private:
    static constexpr int s_small = 16, s_line = 8;

    struct DirectSink;
    struct QueueSink;

    bool small() const noexcept { return m_padded_rows <= s_small; }
    bool take_memory() noexcept;
    std::ptrdiff_t lay_out(double* memory) noexcept;
    Status form_vectors() noexcept;
    Status iterate() noexcept;
    void sort() noexcept;

    const bool m_vectors;
    const int m_rows, m_cols;
    const int m_padded_rows, m_padded_cols;
    const std::ptrdiff_t m_left_stride, m_right_stride;
    double *m_left, *m_right, *m_tile;
    // The singular values at last, and what they come from.
    double *m_diagonal, *m_super, *m_left_inverse, *m_right_inverse;
    double *m_right_before, *m_product, *m_left_factor, *m_right_factor, *m_pivot_row;
    double* m_sign;
    int* m_order;

    Block<double> m_heap;
    Block<int> m_heap_order;
    int m_stack_order[s_small];
    alignas(64) double m_stack[2 * s_small * s_small + (s_tile + 10) * s_small];
};

} // namespace qmml::matrix
