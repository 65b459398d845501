#include "matrix/moments.h"

#include "core/block.h"
#include "core/break_check.h"
#include "matrix/moments_kernels.h"
#include "matrix/rounded_difference.h"
#include "platform/float_guard.h"
#include "platform/memory_hints.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <iterator>

namespace qmml::matrix {
namespace {

// Up to this number of cases the column's minimum is taken from every value first. Larger samples are left as they are;
// callers depend on the limit.
constexpr int s_most_shifted_cases = 1000;

constexpr int strips_of(int variables) noexcept
{
    return variables / s_strip + (variables % s_strip != 0 ? 1 : 0);
}

// Adjacent variables of a data matrix, read tile by tile. What fills up the last strip is zero.
class TileReader {
public:
    // No shifts: the values as they are.
    TileReader(const double* data, int cases, int variables, const RoundedShift* shifts) noexcept
        : m_data(data), m_cases(cases), m_variables(variables), m_shifts(shifts), m_kernels(*s_moment_kernels)
    {
    }

    // step(cases, before) works on the tile, before cases having gone before.
    template <class Step>
    Status for_each(double* tile, Step step) const noexcept
    {
        for (int first = 0; first < m_cases; first += s_tile_cases) {
            if (break_requested())
                return Status::stopped;
            const int cases = std::min(s_tile_cases, m_cases - first);
            for (int variable = 0; variable < m_variables; variable += s_strip)
                read_strip(first, cases, variable, tile + static_cast<std::ptrdiff_t>(variable) * s_tile_cases);
            step(cases, static_cast<double>(first));
            if (m_cases - first <= s_tile_cases)
                break; // the next first might be no int
        }
        return Status::success;
    }

private:
    void read_strip(int first, int cases, int variable, double* strip) const noexcept
    {
        const double* columns = m_data + static_cast<std::ptrdiff_t>(variable) * m_cases + first;
        const int present = std::min(s_strip, m_variables - variable);
        if (m_cases - first > s_prefetched_cases + s_tile_cases)
            prefetch(columns + s_prefetched_cases, present);
        if (m_shifts == nullptr && present == s_strip && cases == s_tile_cases)
            return m_kernels.interleave(columns, m_cases, cases, strip);
        double copy[s_strip * s_tile_cases];
        if (present < s_strip || cases < s_tile_cases)
            std::fill_n(copy, std::size(copy), 0.0);
        for (std::ptrdiff_t i = 0; i < present; ++i) {
            const double* column = columns + i * m_cases;
            if (m_shifts != nullptr)
                m_kernels.rounded_differences(column, cases, m_shifts[variable + i], copy + i * s_tile_cases);
            else
                std::copy_n(column, cases, copy + i * s_tile_cases);
        }
        m_kernels.interleave(copy, s_tile_cases, s_tile_cases, strip);
    }

    // The columns lie far apart, and the processor's own prefetching follows few of them.
    void prefetch(const double* columns, int count) const noexcept
    {
        for (int i = 0; i < count; ++i)
            for (int t = 0; t < s_tile_cases; t += platform::s_cache_line / static_cast<int>(sizeof(double)))
                platform::prefetch(columns + static_cast<std::ptrdiff_t>(i) * m_cases + t);
    }

    static constexpr int s_prefetched_cases = 4 * s_tile_cases; // ahead

    const double* m_data;
    int m_cases, m_variables;
    const RoundedShift* m_shifts;
    const MomentKernels& m_kernels;
};

void find_shifts(const double* data, int cases, int variables, RoundedShift* shifts) noexcept
{
    for (int i = 0; i < variables; ++i)
        shifts[i] = RoundedShift(s_moment_kernels->minimum(data + static_cast<std::ptrdiff_t>(i) * cases, cases));
}

constexpr int s_group = 8 * s_strip;

// Where the variables do not touch each other: some at a time, on the stack.
// step(data, cases, variables, tile, results) makes one result for each variable.
template <class Step>
Status for_groups(const double* data, int r, int c, double* out, Step step) noexcept
{
    const int cases = std::max(r, 0);
    for (int first = 0; first < c;) {
        const int variables = std::min(s_group, c - first);
        double tile[s_group * s_tile_cases], results[s_group] = {};
        const Status status = step(data + static_cast<std::ptrdiff_t>(first) * cases, cases, variables, tile, results);
        if (status != Status::success)
            return status;
        std::copy_n(results, variables, out + first);
        first += variables;
    }
    return Status::success;
}

// Running means and the co-moments of all pairs, or plain products. It stands on the stack while small.
class CoMoments {
public:
    explicit CoMoments(int variables) noexcept : m_variables(variables), m_strips(strips_of(variables))
    {
        const std::int64_t size = static_cast<std::int64_t>(m_strips) * (2 * s_strip + 2 * s_strip_size) +
                                  static_cast<std::int64_t>(m_strips) * (m_strips + 1) / 2 * s_block;
        double* room = m_small;
        m_shifts = m_small_shifts;
        if (m_strips <= s_small_strips) {
            std::fill_n(m_small, size, 0.0);
        } else {
            m_good = m_block.allocate(size) && m_shift_block.allocate(variables);
            room = m_block.data();
            m_shifts = m_shift_block.data();
        }
        if (!m_good)
            return;
        m_blocks = room;
        m_means = room + static_cast<std::ptrdiff_t>(m_strips) * (m_strips + 1) / 2 * s_block;
        m_squares = m_means + static_cast<std::ptrdiff_t>(m_strips) * s_strip;
        m_tile = m_squares + static_cast<std::ptrdiff_t>(m_strips) * s_strip;
        m_after = m_tile + static_cast<std::ptrdiff_t>(m_strips) * s_strip_size;
    }
    CoMoments(const CoMoments&) = delete;
    CoMoments& operator=(const CoMoments&) = delete;

    explicit operator bool() const noexcept { return m_good; }

    Status add_deviations(const double* data, int cases) noexcept
    {
        const bool shifted = cases <= s_most_shifted_cases;
        if (shifted)
            find_shifts(data, cases, m_variables, m_shifts);
        const TileReader reader(data, cases, m_variables, shifted ? m_shifts : nullptr);
        const Status status = reader.for_each(m_tile, [this](int count, double before) {
            s_moment_kernels->deviations(m_tile, m_strips, count, before, m_means, m_after);
            s_moment_kernels->add_products(m_tile, m_after, m_variables, count, m_blocks);
        });
        for (int i = 0; i < m_variables; ++i) {
            if (shifted)
                m_means[i] += m_shifts[i].subtrahend;
            m_squares[i] = row(i, i)[i % s_strip];
        }
        // What fills up the last strip must not raise a fault when the others are divided.
        for (int i = m_variables; i < m_strips * s_strip; ++i)
            m_squares[i] = 1;
        return status;
    }

    Status add_values(const double* data, int cases) noexcept
    {
        return TileReader(data, cases, m_variables, nullptr).for_each(m_tile, [this](int count, double) {
            s_moment_kernels->add_products(m_tile, m_tile, m_variables, count, m_blocks);
        });
    }

    // Of i and those that follow it in its strip; what fills up the last strip is there too.
    const double* means(int i) const noexcept { return m_means + i; }
    const double* squares(int i) const noexcept { return m_squares + i; }
    double square(int i) const noexcept { return m_squares[i]; }

    // The products of i with the strip that begins at variable j <= i.
    const double* row(int i, int j) const noexcept
    {
        const std::ptrdiff_t strip = i / s_strip, lane = i % s_strip;
        return m_blocks + (strip * (strip + 1) / 2 + j / s_strip) * s_block + lane * s_strip;
    }

private:
    static constexpr int s_small_strips = 3;
    static constexpr int s_strip_size = s_tile_cases * s_strip;
    static constexpr int s_small_size =
        s_small_strips * (2 * s_strip + 2 * s_strip_size) + s_small_strips * (s_small_strips + 1) / 2 * s_block;

    int m_variables, m_strips;
    bool m_good = true;
    double *m_blocks = nullptr, *m_means = nullptr, *m_squares = nullptr, *m_tile = nullptr, *m_after = nullptr;
    RoundedShift* m_shifts = nullptr;
    Block<double> m_block;
    Block<RoundedShift> m_shift_block;
    RoundedShift m_small_shifts[s_small_strips * s_strip];
    double m_small[s_small_size];
};

// Both triangles from below: values(i, j, products, results) makes the results of i and of the eight variables from j
// on. Without a result they are only computed.
template <class Values>
void write_symmetric(const CoMoments& moments, int c, double* result, Values values) noexcept
{
    const std::ptrdiff_t stride = c;
    for (int i = 0; i < c; ++i)
        for (int j = 0; j <= i; j += s_strip) {
            double row[s_strip];
            values(i, j, moments.row(i, j), row);
            for (int k = 0; result != nullptr && k < std::min(s_strip, i + 1 - j); ++k)
                result[i + (j + k) * stride] = result[i * stride + j + k] = row[k];
        }
}

void write_correlations(const CoMoments& moments, int cases, int c, double* result, bool centred) noexcept
{
    if (centred)
        write_symmetric(moments, c, result, [&moments](int i, int j, const double* products, double* values) {
            const double square = moments.square(i);
            const double* squares = moments.squares(j);
            for (int k = 0; k < s_strip; ++k)
                values[k] = products[k] / std::sqrt(square * squares[k]);
        });
    else
        write_symmetric(moments, c, result, [&moments, cases](int i, int j, const double* products, double* values) {
            const double n = cases;
            const double mean = moments.means(i)[0], square = moments.square(i);
            const double* means = moments.means(j);
            const double* squares = moments.squares(j);
            for (int k = 0; k < s_strip; ++k)
                values[k] = (products[k] / n + mean * means[k]) /
                            std::sqrt((mean * mean + square / n) * (squares[k] / n + means[k] * means[k]));
        });
}

} // namespace

Status column_means(const double* data, int r, int c, double* means) noexcept
{
    return for_groups(data, r, c, means,
                      [](const double* columns, int cases, int variables, double* tile, double* results) {
                          const TileReader reader(columns, cases, variables, nullptr);
                          return reader.for_each(tile, [=](int count, double before) {
                              s_moment_kernels->update_means(tile, strips_of(variables), count, before, results);
                          });
                      });
}

Status sums_of_squared_deviations(const double* data, int r, int c, double* sums) noexcept
{
    return for_groups(data, r, c, sums,
                      [](const double* columns, int cases, int variables, double* tile, double* results) {
                          RoundedShift shifts[s_group];
                          const bool shifted = cases <= s_most_shifted_cases;
                          if (shifted)
                              find_shifts(columns, cases, variables, shifts);
                          double means[s_group] = {};
                          const TileReader reader(columns, cases, variables, shifted ? shifts : nullptr);
                          return reader.for_each(tile, [&means, tile, variables, results](int count, double before) {
                              s_moment_kernels->update_sums(tile, strips_of(variables), count, before, means, results);
                          });
                      });
}

Status cross_products(const double* data, int r, int c, double* result, bool centred) noexcept
{
    if (c < 1)
        return Status::success;
    CoMoments moments(c);
    if (!moments)
        return Status::out_of_memory;
    const int cases = std::max(r, 0);
    const Status status = centred ? moments.add_deviations(data, cases) : moments.add_values(data, cases);
    if (status != Status::success)
        return status;
    write_symmetric(moments, c, result,
                    [](int, int, const double* products, double* values) { std::copy_n(products, s_strip, values); });
    return Status::success;
}

Status correlations(const double* data, int r, int c, double* result, bool centred, int& failed_column) noexcept
{
    if (c < 1)
        return Status::success;
    if (c == 1) {
        *result = 1;
        return Status::success;
    }
    CoMoments moments(c);
    if (!moments)
        return Status::out_of_memory;
    const int cases = std::max(r, 0);
    const Status status = moments.add_deviations(data, cases);
    if (status != Status::success)
        return status;

    // The first pair i > j without variance is named by i, also where only j lacks it: column 1 stands for column 0.
    for (int i = 0; i < c; ++i)
        if (moments.square(i) <= 0) {
            failed_column = std::max(i, 1);
            return Status::no_variance;
        }

    // Where the caller hears of faults, one leaves the result as it was: so they are raised before it is written.
    if (platform::faults_are_watched()) {
        write_correlations(moments, cases, c, nullptr, centred);
        if (platform::watched_faults() != 0)
            return Status::stopped;
    }
    write_correlations(moments, cases, c, result, centred);
    for (int i = 0; i < c; ++i)
        result[i * (static_cast<std::ptrdiff_t>(c) + 1)] = 1;
    return Status::success;
}

} // namespace qmml::matrix
