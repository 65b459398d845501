#include "matrix/elimination_work.h"

#include <algorithm>
#include <bit>
#include <utility>

namespace qmml::matrix {

static bool takes_panels(int n, bool inverse) noexcept
{
    constexpr int largest_determinant = 384, largest_inverse = 64;
    return n > (inverse ? largest_inverse : largest_determinant);
}

static std::int64_t padded_of(int n, bool panels) noexcept
{
    const std::int64_t group = panels ? 16 : 8;
    return (n + group - 1) / group * group;
}

// In long columns an odd number of groups of rows keeps the elements of a row out of each other's way in the caches.
static std::int64_t stride_of(int n, bool panels) noexcept
{
    const std::int64_t padded = padded_of(n, panels);
    return padded <= 64 ? padded : padded | (panels ? 16 : 8);
}

// NOLINTNEXTLINE(cppcoreguidelines-pro-type-member-init): the arrays for small orders are filled as far as needed
EliminationWork::EliminationWork(const double* a, int n, double* inverse) noexcept
{
    const bool panels = takes_panels(n, inverse != nullptr), few = n <= s_largest_on_stack,
               in_place = inverse != nullptr && !few;
    const std::int64_t panel = panels ? s_longest_panel : 1;
    Elimination& e = m_elimination;
    e.n = n;
    e.padded = padded_of(n, panels);
    e.stride = in_place ? n : stride_of(n, panels);
    e.rows = in_place ? n : e.padded;
    e.inverse = inverse != nullptr;
    e.panels = panels;
    e.steps = 0;
    const std::int64_t copied = in_place ? 0 : n * e.stride;
    double* numbers = m_few_numbers;
    int* integers = m_few_integers;
    e.use = m_few_uses;
    if (!few) {
        e.columns = nullptr;
        if (!m_numbers.allocate(copied + (3 + 2 * panel) * e.padded + s_line) ||
            !m_integers.allocate(5 * std::int64_t{n}) || !m_uses.allocate(n))
            return;
        const auto past_line = reinterpret_cast<std::uintptr_t>(m_numbers.data()) / sizeof(double) % s_line;
        numbers = m_numbers.data() + (s_line - past_line) % s_line;
        integers = m_integers.data();
        e.use = m_uses.data();
    }
    e.columns = in_place ? inverse : numbers;
    e.magnitude = numbers + copied;
    e.largest = e.magnitude + e.padded;
    e.applied = e.largest + e.padded;
    e.multiples = e.applied + e.padded;
    e.pivot_row = e.multiples + panel * e.padded;
    e.listed = integers;
    m_rows = integers + n;
    m_columns = m_rows + n;
    e.candidates = m_columns + n;
    e.next = e.candidates + n;
    for (int j = 0; j < n && !in_place; ++j) {
        const double* const from = a + j * std::int64_t{n};
        double* const to = numbers + j * e.stride;
        for (int i = 0; i < n; ++i)
            to[i] = from[i];
        for (std::int64_t i = n; i < e.stride; ++i)
            to[i] = 0.0;
    }
    mark_unused();
}

void EliminationWork::mark_unused() noexcept
{
    Elimination& e = m_elimination;
    const auto all_but_sign = std::bit_cast<double>(~std::uint64_t{0} >> 1);
    for (std::int64_t j = 0; j < e.padded; ++j) {
        e.magnitude[j] = j < e.n ? all_but_sign : 0.0;
    }
    for (std::int64_t j = e.n; j < e.padded; ++j)
        e.largest[j] = -1.0;
    for (int j = 0; j < e.n; ++j) {
        e.use[j] = Use::none;
        e.listed[j] = j;
    }
    e.listed_count = e.n;
    if (e.panels)
        std::fill_n(e.applied, e.padded, 0.0);
}

void EliminationWork::drop_used(Pivot& pivot) noexcept
{
    Elimination& e = m_elimination;
    const int left = e.listed_count;
    const bool panels = takes_panels(left, false);
    if (left > e.n - e.n / 4 && panels == e.panels)
        return;
    const std::int64_t stride = stride_of(left, panels);
    if (stride == e.stride || e.stride <= s_largest_on_stack)
        return;
    int* const kept = m_rows; // a determinant undoes no exchanges
    for (int j = 0, q = 0; j < e.n; ++j)
        if (e.use[j] == Use::none)
            kept[q++] = j;
    const auto place = [&](int index) { return static_cast<int>(std::lower_bound(kept, kept + left, index) - kept); };
    if (pivot.row >= 0) {
        e.place = place(pivot.column);
        pivot = {place(pivot.row), e.place, pivot.value};
    }
    for (int q = 0; q < left; ++q) {
        const double* const from = e.columns + kept[q] * e.stride;
        double* const to = e.columns + q * stride;
        for (int p = 0; p < left; ++p)
            to[p] = from[kept[p]];
        std::fill(to + left, to + stride, 0.0);
        e.largest[q] = e.largest[kept[q]];
    }
    e.n = left;
    e.stride = stride;
    e.rows = e.padded = padded_of(left, panels);
    e.panels = panels;
    mark_unused();
}

void EliminationWork::write_unused(double* a) const noexcept
{
    const Elimination& e = m_elimination;
    for (int q = 0; q < e.listed_count; ++q)
        for (int p = 0; p < e.listed_count; ++p)
            *a++ = e.columns[e.listed[q] * e.stride + e.listed[p]];
}

void EliminationWork::write_inverse(double* a) noexcept
{
    const Elimination& e = m_elimination;
    for (int step = e.n - 1; step >= 0; --step)
        if (m_rows[step] != m_columns[step]) {
            double* const row = e.columns + m_rows[step] * e.stride;
            std::swap_ranges(row, row + e.n, e.columns + m_columns[step] * e.stride);
        }
    write_as_it_is(a);
}

void EliminationWork::write_as_it_is(double* a) const noexcept
{
    const Elimination& e = m_elimination;
    for (int j = 0; j < e.n && a != e.columns; ++j)
        std::copy_n(e.columns + j * e.stride, e.n, a + j * std::int64_t{e.n});
}

} // namespace qmml::matrix
