#include "matrix/elimination.h"

#include "core/break_check.h"
#include "matrix/elimination_product.h"
#include "matrix/elimination_small.h"
#include "matrix/elimination_small_determinant.h"
#include "matrix/elimination_work.h"

#include <algorithm>
#include <cmath>
#include <utility>

namespace qmml::matrix {
namespace {

constexpr double s_least_pivot = 1e-25;
constexpr double s_least_partial_determinant = 1e-25; // many moderate pivots may be singular too
constexpr double s_greatest_determinant = 1e150;

bool is_usable(const Pivot& pivot) noexcept
{
    return pivot.row >= 0 && std::fabs(pivot.value) >= s_least_pivot;
}

class RunningDeterminant {
public:
    // Looks at a step's pivot.
    Status add(const Pivot& pivot) noexcept
    {
        if (break_requested())
            return Status::stopped;
        if (!is_usable(pivot))
            return Status::singular;
        m_negative ^= (pivot.row != pivot.column) != (pivot.value < 0.0);
        m_magnitude.multiply(std::fabs(pivot.value));
        return m_magnitude.less(s_least_partial_determinant) ? Status::singular : Status::success;
    }

    Status end(double& value) const noexcept
    {
        if (m_magnitude.greater(s_greatest_determinant))
            return Status::out_of_range;
        value = m_negative ? -m_magnitude.value() : m_magnitude.value();
        return Status::success;
    }

private:
    ScaledProduct m_magnitude;
    bool m_negative = false;
};

template <int N>
Status end_small(const SmallDeterminant<N>& small, RunningDeterminant& product, double& value) noexcept
{
    const Status status = small.eliminate(product);
    return status == Status::success ? product.end(value) : status;
}

template <int N>
Status small_determinant(const double* a, double& value) noexcept
{
    SmallDeterminant<N> small;
    std::copy_n(a, N * N, small.elements);
    RunningDeterminant product;
    return end_small(small, product, value);
}

constexpr int s_largest_small = 6;

Status large_determinant(const double* a, int n, double& value) noexcept
{
    EliminationWork work(a, n, nullptr);
    if (!work)
        return Status::out_of_memory;
    const EliminationKernels& kernels = *s_elimination_kernels;
    Elimination& e = work.elimination();
    Pivot pivot = kernels.begin(e);
    RunningDeterminant product;
    for (int left = n; left > s_largest_small; --left) {
        if (const Status status = product.add(pivot); status != Status::success)
            return status;
        pivot = kernels.step(e, pivot);
        if (e.steps == 0)
            work.drop_used(pivot);
    }
    SmallDeterminant<s_largest_small> rest;
    work.write_unused(rest.elements);
    return end_small(rest, product, value);
}

// The step of a pivot too small to divide by gets as far as to its exchange and the 1 in its place.
void begin_step(double* columns, int n, std::int64_t stride, const Pivot& pivot) noexcept
{
    if (pivot.row < 0)
        return;
    for (int j = 0; j < n; ++j)
        std::swap(columns[j * stride + pivot.row], columns[j * stride + pivot.column]);
    columns[pivot.column * stride + pivot.column] = 1.0;
}

Status small_inverse(double* a, int n) noexcept
{
    SmallElimination elimination(a, n);
    Pivot pivots[SmallElimination::s_largest];
    for (int step = 0; step < n; ++step) {
        if (break_requested())
            return Status::stopped;
        const Pivot pivot = pivots[step] = elimination.search();
        if (!is_usable(pivot)) {
            begin_step(a, n, n, pivot);
            return Status::singular;
        }
        elimination.step(pivot);
    }
    for (int step = n - 1; step >= 0; --step)
        if (const Pivot& pivot = pivots[step]; pivot.row != pivot.column)
            for (int i = 0; i < n; ++i)
                std::swap(a[pivot.row * n + i], a[pivot.column * n + i]);
    return Status::success;
}

Status large_inverse(double* a, int n) noexcept
{
    EliminationWork work(a, n, a);
    if (!work)
        return Status::out_of_memory;
    const EliminationKernels& kernels = *s_elimination_kernels;
    Elimination& e = work.elimination();
    Pivot pivot = kernels.begin(e);
    for (int step = 0; step < n; ++step) {
        const bool stop = break_requested();
        if (stop || !is_usable(pivot)) {
            kernels.close_panel(e);
            if (!stop)
                begin_step(e.columns, n, e.stride, pivot);
            work.write_as_it_is(a);
            return stop ? Status::stopped : Status::singular;
        }
        work.record_exchange(step, pivot);
        pivot = kernels.step(e, pivot);
    }
    kernels.close_panel(e);
    work.write_inverse(a);
    return Status::success;
}

} // namespace

Status determinant(const double* a, int n, double& value) noexcept
{
    value = 0.0;
    switch (n) {
    case 1: return small_determinant<1>(a, value);
    case 2: return small_determinant<2>(a, value);
    case 3: return small_determinant<3>(a, value);
    case 4: return small_determinant<4>(a, value);
    case 5: return small_determinant<5>(a, value);
    case s_largest_small: return small_determinant<s_largest_small>(a, value);
    default: break;
    }
    if (n > 0)
        return large_determinant(a, n, value);
    value = 1.0;
    return Status::success;
}

Status invert_in_place(double* a, int n) noexcept
{
    return n <= SmallElimination::s_largest ? small_inverse(a, n) : large_inverse(a, n);
}

} // namespace qmml::matrix
