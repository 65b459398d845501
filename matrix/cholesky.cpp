#include "core/block.h"
#include "core/break_check.h"
#include "core/compare.h"
#include "matrix/factors.h"
#include "matrix/factors_kernels.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstdint>

namespace qmml::matrix {
namespace {

constexpr std::int64_t strip_begin(std::int64_t strip) noexcept
{
    return strip * (strip + 1) / 2 * s_lanes * s_lanes;
}

// The diagonal as it was given: what is small is measured by it.
struct Diagonal {
    const double* a;
    std::ptrdiff_t step;

    double operator[](std::ptrdiff_t j) const noexcept { return a[j * step]; }
};

// A row in the columns from j to end, where the pivot is zero: only what is zero already can be solved for.
bool clear_row(double* elements, double pivot, int j, int end, Diagonal diagonal) noexcept
{
    for (; j < end; ++j, ++elements) {
        const double tolerance = diagonal[j] * 1e-28;
        if (is_greater(*elements * *elements, std::fabs(tolerance * pivot)))
            return false;
        *elements = 0;
    }
    return true;
}

// Rows and columns i to i + size - 1, in rows of sixteen lanes. A size that the compiler knows keeps them in registers.
template <int Size>
bool factor_triangle(double* triangle, int i, int size, Diagonal diagonal) noexcept
{
    if (Size != 0)
        size = Size;
#pragma GCC unroll 8
    for (int r = 0; r < size; ++r) {
        double* u = triangle + static_cast<std::ptrdiff_t>(r) * s_lanes;
        const double rest = u[r];
        if (is_less_equal(std::fabs(rest), std::fabs(diagonal[i + r] * 1e-14)))
            u[r] = 0; // semidefinite; a NaN too ends here
        else if (is_less(rest, 0.0))
            return false;
        else
            u[r] = std::sqrt(rest);
        if (!is_equal(u[r], 0.0)) {
#pragma GCC unroll 8
            for (int c = r + 1; c < size; ++c)
                u[c] /= u[r];
        } else if (!clear_row(u + r + 1, u[r], i + r + 1, i + size, diagonal)) {
            return false;
        }
#pragma GCC unroll 8
        for (int below = r + 1; below < size; ++below)
#pragma GCC unroll 8
            for (int c = below; c < size; ++c)
                triangle[below * s_lanes + c] -= u[below] * u[c];
    }
    return true;
}

bool factor_triangle(double* triangle, int i, int size, Diagonal diagonal) noexcept
{
    switch (size) {
    case 4: return factor_triangle<4>(triangle, i, size, diagonal);
    case s_tile_rows: return factor_triangle<s_tile_rows>(triangle, i, size, diagonal);
    default: return factor_triangle<0>(triangle, i, size, diagonal);
    }
}

// Up to eight rows and columns: one triangle.
Status factor_small(double* a, int n) noexcept
{
    double rows[s_tile_rows * s_lanes];
    for (int j = 0; j < n; ++j)
        for (int i = 0; i <= j; ++i)
            rows[i * s_lanes + j] = a[j * n + i];
    if (break_requested())
        return Status::stopped;
    if (!factor_triangle(rows, 0, n, {a, n + 1}))
        return Status::singular;
    for (int j = 0; j < n; ++j) {
        for (int i = 0; i <= j; ++i)
            a[j * n + i] = rows[i * s_lanes + j];
        for (int i = j + 1; i < n; ++i)
            a[j * n + i] = 0;
    }
    return Status::success;
}

// The upper triangle in strips of sixteen columns, each as long as its last column. The caller's matrix stays as it is
// until the factor is known to exist.
class Factorisation {
public:
    Factorisation(double* a, int n) noexcept : m_a(a), m_n(n), m_strips((n - 1) / s_lanes + 1)
    {
        if (n > s_small) {
            m_strip = m_block.allocate(strip_begin(m_strips)) ? m_block.data() : nullptr;
        } else {
            m_strip = m_room;
            if (n % s_lanes != 0) // the last strip has idle lanes
                std::fill(row(m_strips - 1, 0), m_room + strip_begin(m_strips), 0.0);
        }
    }
    Factorisation(const Factorisation&) = delete;
    Factorisation& operator=(const Factorisation&) = delete;

    Status run() noexcept
    {
        if (m_strip == nullptr)
            return Status::out_of_memory;
        pack();
        for (int strip = 0; strip < m_strips; strip += s_strips_together)
            if (const Status status = factor_strips(strip, std::min(strip + s_strips_together, m_strips));
                status != Status::success)
                return status;
        unpack();
        return Status::success;
    }

private:
    static constexpr int s_small = 64;
    static constexpr int s_strips_together = 4; // so often a row of tiles is used once it has been fetched

    double* row(int strip, int i) const noexcept
    {
        return m_strip + strip_begin(strip) + static_cast<std::ptrdiff_t>(i) * s_lanes;
    }
    double* column(int j) const noexcept { return m_a + static_cast<std::ptrdiff_t>(j) * m_n; }
    Diagonal diagonal() const noexcept { return {m_a, static_cast<std::ptrdiff_t>(m_n) + 1}; }

    void pack() const noexcept;
    void unpack() const noexcept;
    Status factor_strips(int first, int end) const noexcept;
    bool solve_right(int strip, int i, int lane) const noexcept;

    double* m_a;
    int m_n, m_strips;
    const FactorKernels& m_kernels = *s_factor_kernels;
    Block<double> m_block;
    double* m_strip;
    double m_room[strip_begin(s_small / s_lanes)];
};

void Factorisation::pack() const noexcept
{
    for (int strip = 0; strip < m_strips; ++strip) {
        const int first = strip * s_lanes;
        m_kernels.transpose(row(strip, 0), s_lanes, column(first), m_n, std::min(first + s_lanes, m_n),
                            std::min(s_lanes, m_n - first));
    }
}

void Factorisation::unpack() const noexcept
{
    for (int strip = 0; strip < m_strips; ++strip) {
        const int first = strip * s_lanes, count = std::min(s_lanes, m_n - first);
        m_kernels.transpose(column(first), m_n, row(strip, 0), s_lanes, count, first);
        for (int j = first; j < first + count; ++j) {
            for (int i = first; i <= j; ++i)
                column(j)[i] = row(strip, i)[j - first];
            std::fill(column(j) + j + 1, column(j) + m_n, 0.0);
        }
    }
}

// All rows of some strips, by eight; k ascends through them, as in each element's sum.
Status Factorisation::factor_strips(int first, int end) const noexcept
{
    const int rows = std::min(end * s_lanes, m_n);
    for (int i = 0; i < rows; i += s_tile_rows) {
        if (break_requested())
            return Status::stopped;
        const int own = i / s_lanes, lane = i % s_lanes;
        const double* left = row(own, 0) + lane;
        for (int strip = std::max(first, own); strip < end; ++strip) {
            double* target = row(strip, i);
            m_kernels.subtract_products(target, s_lanes, left, row(strip, 0), i);
            if (strip == own && !factor_triangle(target + lane, i, std::min(s_tile_rows, m_n - i), diagonal()))
                return Status::singular;
            // What stands to the right of the triangle in its own strip, or all of another.
            const int from = strip > own ? 0 : lane + s_tile_rows;
            if (from < s_lanes && strip * s_lanes + from < m_n && !solve_right(strip, i, from))
                return Status::singular;
        }
    }
    return Status::success;
}

// Rows i to i + 7 in the lanes from lane on.
bool Factorisation::solve_right(int strip, int i, int lane) const noexcept
{
    const double* triangle = row(i / s_lanes, i) + i % s_lanes;
    double* rows = row(strip, i) + lane;
    bool regular = true;
    for (std::ptrdiff_t r = 0; r < s_tile_rows; ++r)
        regular = regular && !is_equal(triangle[r * (s_lanes + 1)], 0.0);
    if (regular) {
        m_kernels.solve(rows, triangle, s_lanes - lane);
        return true;
    }
    const int first = strip * s_lanes + lane, end = std::min((strip + 1) * s_lanes, m_n);
    for (std::ptrdiff_t r = 0; r < s_tile_rows; ++r) {
        double* target = rows + r * s_lanes;
        for (std::ptrdiff_t k = 0; k < r; ++k)
            for (int c = 0; c < end - first; ++c)
                target[c] -= triangle[k * s_lanes + r] * rows[k * s_lanes + c];
        const double pivot = triangle[r * (s_lanes + 1)];
        if (is_equal(pivot, 0.0)) {
            if (!clear_row(target, pivot, first, end, diagonal()))
                return false;
        } else {
            for (int c = 0; c < end - first; ++c)
                target[c] /= pivot;
        }
    }
    return true;
}

} // namespace

Status cholesky_in_place(double* a, int n) noexcept
{
    if (n < 1)
        return Status::success;
    return n <= s_tile_rows ? factor_small(a, n) : Factorisation(a, n).run();
}

} // namespace qmml::matrix
