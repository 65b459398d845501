#include "core/block.h"
#include "core/break_check.h"
#include "matrix/factors.h"
#include "matrix/factors_kernels.h"
#include "platform/float_guard.h"
#include "platform/memory_hints.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstdint>

namespace qmml::matrix {
namespace {

constexpr double s_least_pivot = 1e-25;

enum class PivotState { good, refused, refused_when_scaled };

// A NaN is refused forward only. In reverse the elements are divided by -1/p, which has to pass the same check, and is
// looked at when the pivot's column has been scaled already.
PivotState state_of(double p, int direction, int n) noexcept
{
    if (direction > 0)
        return std::fabs(p) >= s_least_pivot ? PivotState::good : PivotState::refused;
    if (std::fabs(p) < s_least_pivot)
        return PivotState::refused;
    return n > 1 && std::fabs(-1 / p) < s_least_pivot ? PivotState::refused_when_scaled : PivotState::good;
}

// The whole of a small matrix, or the rows and columns of a panel of pivots where they cross: a private copy.
template <int Capacity>
struct SweptBlock {
    static constexpr int s_stride = Capacity;

    // The lower triangle counts.
    void read(const double* a, std::ptrdiff_t stride, int n) noexcept
    {
        size = n;
        for (int j = 0; j < n; ++j) {
            std::copy_n(a + j * stride + j, n - j, values + j * s_stride + j);
            std::fill_n(values + j * s_stride + n, (s_tile_rows - n % s_tile_rows) % s_tile_rows, 0.0);
        }
    }
    void write_lower(double* a, std::ptrdiff_t stride) const noexcept
    {
        for (int j = 0; j < size; ++j)
            std::copy_n(values + j * s_stride + j, size - j, a + j * stride + j);
    }

    double pivot(int k) const noexcept { return values[k * (s_stride + 1)]; }

    alignas(64) double values[Capacity * Capacity];
    int size = 0;
};

// Makes a symmetric in blocks, which stay in the cache.
void copy_lower_to_upper(double* a, int n, const FactorKernels& kernels) noexcept
{
    const std::ptrdiff_t stride = n;
    for (int i = 0; i < n; i += s_lanes) {
        const int rows = std::min(s_lanes, n - i);
        for (int r = i; r < i + rows; ++r)
            for (int c = r + 1; c < i + rows; ++c)
                a[c * stride + r] = a[r * stride + c];
        const int rest = i + rows;
        if (rest < n)
            kernels.transpose(a + rest * stride + i, stride, a + i * stride + rest, stride, n - rest, rows);
    }
}

void scale_pivot_column(double* a, int n, int k) noexcept
{
    const std::ptrdiff_t stride = n;
    const double d = -1 / a[k * stride + k];
    for (int i = 0; i < n; ++i)
        (i < k ? a[i * stride + k] : a[k * stride + i]) *= d;
    a[k * stride + k] = d;
}

// Gives up at a pivot; the ones before it are swept.
Status give_up(PivotState state, double* a, int n, int pivot) noexcept
{
    if (state == PivotState::refused_when_scaled)
        scale_pivot_column(a, n, pivot);
    return Status::singular;
}

// Element by element. The other ways compute along with what counts some that does not, and where the caller hears of
// faults, an infinity there would be one.
Status sweep_plainly(double* a, int n, int first, int last, int direction) noexcept
{
    const auto at = [=](int i, int j) -> double& {
        return i < j ? a[static_cast<std::ptrdiff_t>(i) * n + j] : a[static_cast<std::ptrdiff_t>(j) * n + i];
    };
    for (int k = first; k <= last; ++k) {
        if (break_requested())
            return Status::stopped;
        const double p = at(k, k);
        const PivotState state = state_of(p, direction, n);
        if (state != PivotState::good)
            return give_up(state, a, n, k);
        if (direction < 0)
            scale_pivot_column(a, n, k);
        const double divisor = direction > 0 ? p : at(k, k);
        for (int i = 0; i < n; ++i) {
            if (i == k)
                continue;
            const double quotient = at(i, k) / divisor;
            for (int j = 0; j <= i; ++j)
                if (j != k)
                    at(i, j) = direction > 0 ? at(i, j) - at(j, k) * quotient : at(i, j) + at(j, k) * quotient;
        }
        for (int i = 0; direction > 0 && i < n; ++i)
            if (i != k)
                at(i, k) /= p;
        at(k, k) = -1 / p;
    }
    return Status::success;
}

bool all_moderate(const double* a, int n) noexcept
{
    constexpr double limit = 1e140;
    for (std::ptrdiff_t j = 0; j < n; ++j)
        for (std::ptrdiff_t i = j; i < n; ++i)
            if (!(std::fabs(a[j * n + i]) < limit))
                return false;
    return true;
}

constexpr int s_small = 64;

Status sweep_small(double* a, int n, int first, int last, int direction, const FactorKernels& kernels) noexcept
{
    SweptBlock<s_small> block;
    double left[s_small], right[s_small];
    block.read(a, n, n);
    for (int k = first; k <= last; ++k) {
        const PivotState state = state_of(block.pivot(k), direction, n);
        const bool stopped = break_requested();
        if (stopped || state != PivotState::good) {
            block.write_lower(a, n);
            return stopped ? Status::stopped : give_up(state, a, n, k);
        }
        kernels.sweep_pivot(block.values, s_small, n, k, direction, {left, right});
    }
    block.write_lower(a, n);
    return Status::success;
}

// Pivots in panels: first the rows and columns of the panel, then each remaining element once, with the panel's pivots
// in ascending order. So it has the bits of one pivot after the other.
class PanelSweep {
public:
    PanelSweep(double* a, int n, int direction, const FactorKernels& kernels) noexcept
        : m_a(a), m_n(n), m_direction(direction), m_kernels(kernels),
          m_factor_block((static_cast<std::int64_t>(n) / s_lanes + 2) * 2 * s_strip_size),
          m_factors(m_factor_block.data())
    {
    }

    Status run(int first, int last) noexcept
    {
        if (!m_factor_block)
            return Status::out_of_memory;
        for (int k = first; k <= last; k += s_panel) {
            if (break_requested())
                return Status::stopped;
            const int count = std::min(s_panel, last - k + 1), good = sweep_block(k, count);
            if (good < count)
                sweep_block(k, good); // the pivots that are left over become rows like others
            sweep_rest();
            if (good < count) {
                const int bad = k + good;
                return give_up(state_of(column(bad)[bad], m_direction, m_n), m_a, m_n, bad);
            }
        }
        return Status::success;
    }

private:
    static constexpr int s_panel = 32;
    static constexpr int s_strip_size = s_panel * s_lanes;

    // Rows off the panel, at most sixteen of them.
    struct Strip {
        int row, count;
        PivotFactors factors;
    };

    double* column(int j) const noexcept { return m_a + static_cast<std::ptrdiff_t>(j) * m_n; }

    int sweep_block(int first, int count) noexcept;
    void sweep_rest() noexcept;
    Strip strip(int index) const noexcept;
    void sweep_strip(const Strip& rows) noexcept;
    void update(const Strip& rows, const Strip& columns) const noexcept;

    // The tile that is next. Its columns lie far apart, and the processor's own prefetching follows few of them.
    void prefetch_below(const double* corner) const noexcept
    {
        for (int j = 0; j < s_tile_rows; ++j)
            for (int i = s_lanes; i <= 2 * s_lanes; i += s_lanes / 2)
                platform::prefetch(corner + static_cast<std::ptrdiff_t>(j) * m_n + i);
    }

    double* m_a;
    int m_n, m_direction;
    const FactorKernels& m_kernels;
    Block<double> m_factor_block;
    double* m_factors;
    int m_first = 0, m_count = 0; // the panel
    SweptBlock<s_panel> m_block;
    double m_pivots[s_panel], m_left[s_panel * s_panel], m_right[s_panel * s_panel];
};

// The number of pivots that could be swept.
int PanelSweep::sweep_block(int first, int count) noexcept
{
    m_first = first;
    m_count = count;
    m_block.read(column(first) + first, m_n, count);
    for (int k = 0; k < count; ++k) {
        m_pivots[k] = m_block.pivot(k);
        if (state_of(m_pivots[k], m_direction, m_n) != PivotState::good)
            return k;
        const std::ptrdiff_t run = static_cast<std::ptrdiff_t>(k) * s_panel;
        m_kernels.sweep_pivot(m_block.values, s_panel, count, k, m_direction, {m_left + run, m_right + run});
    }
    return count;
}

void PanelSweep::sweep_rest() noexcept
{
    const int above = (m_first + s_lanes - 1) / s_lanes;
    const int strips = above + (m_n - m_first - m_count + s_lanes - 1) / s_lanes;
    for (int i = 0; i < strips; ++i)
        sweep_strip(strip(i));
    m_block.write_lower(column(m_first) + m_first, m_n);
    for (int j = 0; j < strips; ++j)
        for (int i = j; i < strips; ++i)
            update(strip(i), strip(j));
}

PanelSweep::Strip PanelSweep::strip(int index) const noexcept
{
    const int above = (m_first + s_lanes - 1) / s_lanes;
    const int row = index < above ? index * s_lanes : m_first + m_count + (index - above) * s_lanes;
    const int end = index < above ? m_first : m_n;
    double* factors = m_factors + static_cast<std::ptrdiff_t>(index) * 2 * s_strip_size;
    return {row, std::min(s_lanes, end - row), {factors, factors + s_strip_size}};
}

// What the panel's columns hold in these rows.
void PanelSweep::sweep_strip(const Strip& rows) noexcept
{
    alignas(64) double values[s_strip_size];
    if (rows.count < s_lanes)
        std::fill_n(values, s_strip_size, 0.0);
    const bool below = rows.row > m_first;
    double* columns = column(m_first) + rows.row;
    if (below)
        for (std::ptrdiff_t k = 0; k < m_count; ++k)
            std::copy_n(columns + k * m_n, rows.count, values + k * s_lanes);
    else
        m_kernels.transpose(values, s_lanes, column(rows.row) + m_first, m_n, m_count, rows.count);
    m_kernels.sweep_strip(values, below, m_pivots, m_count, m_direction, {m_left, m_right}, s_panel, rows.factors);
    if (below)
        for (std::ptrdiff_t k = 0; k < m_count; ++k)
            std::copy_n(values + k * s_lanes, rows.count, columns + k * m_n);
    else
        m_kernels.transpose(column(rows.row) + m_first, m_n, values, s_lanes, rows.count, m_count);
}

// The elements where these rows and columns cross, eight columns at a time. Incomplete tiles are worked on in a copy.
void PanelSweep::update(const Strip& rows, const Strip& columns) const noexcept
{
    for (int half = 0; half < columns.count; half += s_tile_rows) {
        double* corner = column(columns.row + half) + rows.row;
        const double* left = columns.factors.left + half;
        const int count = std::min(s_tile_rows, columns.count - half);
        const bool diagonal = rows.row == columns.row;
        if (!diagonal && rows.count == s_lanes && count == s_tile_rows) {
            prefetch_below(corner);
            m_kernels.subtract_products(corner, m_n, left, rows.factors.right, m_count);
            continue;
        }
        double copy[s_tile_rows * s_lanes] = {};
        const auto first_row = [diagonal, half](int j) { return diagonal ? half + j : 0; };
        for (int j = 0; j < count; ++j)
            for (int i = first_row(j); i < rows.count; ++i)
                copy[j * s_lanes + i] = corner[static_cast<std::ptrdiff_t>(j) * m_n + i];
        m_kernels.subtract_products(copy, s_lanes, left, rows.factors.right, m_count);
        for (int j = 0; j < count; ++j)
            for (int i = first_row(j); i < rows.count; ++i)
                corner[static_cast<std::ptrdiff_t>(j) * m_n + i] = copy[j * s_lanes + i];
    }
}

} // namespace

Status sweep(double* a, int n, int first, int last, int direction) noexcept
{
    if (first < 0 || first >= n || last >= n || (direction != 1 && direction != -1))
        return Status::invalid_pivots;
    const FactorKernels& kernels = *s_factor_kernels;
    Status status = Status::success;
    if (first <= last && platform::faults_are_watched() && !all_moderate(a, n))
        status = sweep_plainly(a, n, first, last, direction);
    else if (first <= last)
        status = n <= s_small ? sweep_small(a, n, first, last, direction, kernels)
                              : PanelSweep(a, n, direction, kernels).run(first, last);
    if (status == Status::success)
        copy_lower_to_upper(a, n, kernels);
    return status;
}

} // namespace qmml::matrix
