#include "matrix/solve.h"

#include "core/block.h"
#include "core/break_check.h"
#include "core/compare.h"
#include "matrix/product_kernels.h"
#include "matrix/solve_kernels.h"
#include "matrix/solve_refined.h"
#include "matrix/solve_small.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <utility>

namespace qmml::matrix {
namespace {

constexpr int s_strip = 64; // columns that stay in the second-level cache while they are worked on

// What a solution works with.
struct Work {
    double* scale; // of the rows; once these are factored, a copy of the right-hand side
    double* residual;
    int* exchanges;
    double* matrix; // as it was
};

// Crout's elimination by halves: each element takes its terms with k ascending, as it would column by column.
class Elimination {
public:
    Elimination(double* a, int n, const Work& work, const SolveKernels& kernels) noexcept
        : m_a{a, n}, m_n(n), m_scale(work.scale), m_copy(work.matrix), m_exchanges(work.exchanges), m_kernels(kernels),
          m_product(*s_product_kernels)
    {
    }

    Status run() noexcept
    {
        m_kernels.copy_and_measure(m_copy, m_scale, m_a.data, m_n);
        for (int i = 0; i < m_n; ++i) {
            if (is_less(m_scale[i], 1e-20))
                return Status::singular;
            m_scale[i] = 1.0 / m_scale[i];
        }
        return factor(0, m_n);
    }

private:
    Part at(int row, int col) const noexcept { return {m_a.data + row + col * m_a.stride, m_a.stride}; }
    ConstPart const_at(int row, int col) const noexcept { return {at(row, col).data, m_a.stride}; }

    // The columns from first on, those before them being done with. Exchanges reach no further than these columns.
    Status factor(int first, int cols) noexcept
    {
        if (cols <= s_panel)
            return factor_panel(first, cols);
        const int left = (cols / 2 + s_panel - 1) / s_panel * s_panel;
        const int right = cols - left, middle = first + left, end = middle + right;
        if (const Status status = factor(first, left); status != Status::success)
            return status;
        for (int col = middle; col < end; col += s_strip) {
            const int width = std::min(end - col, s_strip);
            exchange(col, col + width, first, middle);
            solve_lower(first, left, col, width);
            m_product.subtract(at(middle, col), const_at(middle, first), const_at(first, col), m_n - middle, width,
                               left);
        }
        if (const Status status = factor(middle, right); status != Status::success)
            return status;
        exchange(first, middle, middle, end);
        return Status::success;
    }

    Status factor_panel(int first, int cols) noexcept
    {
        for (int j = 0; j < cols; ++j)
            if (break_requested())
                return Status::stopped;
        m_kernels.factor_panel(at(first, first), m_n - first, cols, m_scale + first, m_exchanges + first);
        for (int j = first; j < first + cols; ++j)
            m_exchanges[j] += first;
        return Status::success;
    }

    // In the columns from first up to end, the exchanges of the steps from..to. Four columns side by side, whose loads
    // and stores do not wait for each other.
    void exchange(int first, int end, int from, int to) const noexcept
    {
        int j = first;
        for (; j + 4 <= end; j += 4)
            exchange_columns<4>(at(0, j), from, to);
        for (; j < end; ++j)
            exchange_columns<1>(at(0, j), from, to);
    }
    template <int Columns>
    void exchange_columns(Part columns, int from, int to) const noexcept
    {
        for (int i = from; i < to; ++i) {
            const int row = m_exchanges[i];
            double upper[Columns], lower[Columns];
            for (int j = 0; j < Columns; ++j) {
                upper[j] = columns.data[i + j * columns.stride];
                lower[j] = columns.data[row + j * columns.stride];
            }
            for (int j = 0; j < Columns; ++j) {
                columns.data[i + j * columns.stride] = lower[j];
                columns.data[row + j * columns.stride] = upper[j];
            }
        }
    }

    // The unit lower triangle at (first, first) against the columns from col on.
    void solve_lower(int first, int order, int col, int cols) const noexcept
    {
        if (order <= s_panel)
            return m_kernels.solve_lower(const_at(first, first), at(first, col), cols);
        const int upper = (order / 2 + s_panel - 1) / s_panel * s_panel, middle = first + upper;
        solve_lower(first, upper, col, cols);
        m_product.subtract(at(middle, col), const_at(middle, first), const_at(first, col), order - upper, cols, upper);
        solve_lower(middle, order - upper, col, cols);
    }

    const Part m_a;
    const int m_n;
    double* const m_scale;
    double* const m_copy;
    int* const m_exchanges;
    const SolveKernels& m_kernels;
    const ProductKernels& m_product;
};

// What a solution takes from the factors.
struct Steps {
    const double* factors;
    int n;
    const Work& work;
    const SolveKernels& kernels;

    void substitute(double* x) const noexcept
    {
        for (int i = 0; i < n; ++i)
            std::swap(x[i], x[work.exchanges[i]]);
        kernels.substitute(factors, n, x);
    }
    void residual(double* r, const double* x, const double* b) const noexcept
    {
        kernels.residual(r, work.matrix, n, x, b);
    }
};

Status solve_with(double* a, double* b, int n, int m, const Work& work) noexcept
{
    const SolveKernels& kernels = *s_solve_kernels;
    if (const Status status = Elimination(a, n, work, kernels).run(); status != Status::success)
        return status;
    const Steps steps{a, n, work, kernels};
    for (int j = 0; j < m; ++j)
        solve_refined(steps, n, b + std::ptrdiff_t{n} * j, work.scale, work.residual);
    return Status::success;
}

} // namespace

Status solve_in_place(double* a, double* b, int n, int m) noexcept
{
    if (n < 1)
        return Status::success;
    if (n <= s_small_order)
        return solve_small(a, b, n, m);
    if (n <= s_stack_order)
        return s_solve_kernels->solve_on_stack(a, b, n, m);
    Block<double> scale(n), residual(n), matrix(std::int64_t{n} * n);
    Block<int> exchanges(n);
    if (!scale || !residual || !exchanges || !matrix)
        return Status::out_of_memory;
    return solve_with(a, b, n, m, {scale.data(), residual.data(), exchanges.data(), matrix.data()});
}

} // namespace qmml::matrix
