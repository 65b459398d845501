#include "matrix/eigen.h"

#include "core/block.h"
#include "core/compare.h"
#include "core/missing.h"
#include "matrix/tridiagonal.h"

#include <algorithm>
#include <numeric>
#include <utility>

namespace qmml::matrix {
namespace {

constexpr int s_direct_order = 64; // up to it, reducing the full matrix row by row is quicker than in blocks

// Columns whose starts are a multiple of a page apart would compete for the same lines of the caches.
std::ptrdiff_t leading_dimension(int n) noexcept
{
    const int rows = padded(n);
    return rows % 64 == 0 ? rows + 8 : rows;
}

// The lower triangle of a, mirrored into the upper one of z; in both where z is to be full.
void copy_mirrored(const double* a, std::ptrdiff_t n, double* z, std::ptrdiff_t ld, bool full) noexcept
{
    constexpr std::ptrdiff_t tile = 8;
    for (std::ptrdiff_t column = 0; column < n; column += tile)
        for (std::ptrdiff_t row = column; row < n; row += tile)
            for (std::ptrdiff_t j = column; j < std::min(column + tile, n); ++j)
                for (std::ptrdiff_t i = std::max(row, j); i < std::min(row + tile, n); ++i) {
                    z[i * ld + j] = a[j * n + i];
                    if (full || row == column)
                        z[j * ld + i] = a[j * n + i];
                }
}

// index lists the places of the values in descending order, equal ones as they stand. A value that is not a number
// stops those that exchanges of neighbours bring up to it.
void sort_descending(const double* values, int n, int* index) noexcept
{
    if (std::any_of(values, values + n, [](double v) { return is_nan(v); })) {
        for (int k = 0; k < n; ++k) {
            index[k] = k;
            for (int j = k; j > 0 && values[index[j - 1]] < values[index[j]]; --j)
                std::swap(index[j - 1], index[j]);
        }
    } else if (n <= s_small_order) { // by counting: no guesses for the processor to get wrong
        for (int k = 0; k < n; ++k) {
            int before = 0;
            for (int j = 0; j < k; ++j)
                before += values[j] >= values[k] ? 1 : 0;
            for (int j = k + 1; j < n; ++j)
                before += values[j] > values[k] ? 1 : 0;
            index[before] = k;
        }
    } else {
        std::iota(index, index + n, 0);
        std::sort(index, index + n,
                  [&](int x, int y) { return values[x] > values[y] || (values[x] == values[y] && x < y); });
    }
}

struct Decomposition {
    double* z; // becomes the vectors
    double *d, *e;
    int* index;
};

void deliver(const Decomposition& from, int n, std::ptrdiff_t ld, double* values, double* vectors,
             int& positive_count) noexcept
{
    sort_descending(from.d, n, from.index);
    for (std::ptrdiff_t k = 0; k < n; ++k) {
        values[k] = from.d[from.index[k]];
        positive_count += is_greater(values[k], 0.0) ? 1 : 0;
        std::copy_n(from.z + from.index[k] * ld, n, vectors + k * n);
    }
}

Status decompose_directly(const double* a, int n, std::ptrdiff_t ld, double* work, const Decomposition& to) noexcept
{
    copy_mirrored(a, n, work, ld, true);
    const Status status = reduce_directly(work, to.z, n, ld, to.d, to.e, work + ld * padded(n));
    return status != Status::success ? status : tridiagonal_ql(to.d, to.e, n, to.z, ld);
}

Status small(const double* a, int n, double* values, double* vectors, int& positive_count) noexcept
{
    double z[s_small_order * s_small_order], work[s_small_order * (s_small_order + 2)];
    double d[s_small_order], e[s_small_order];
    int index[s_small_order];
    const int ld = padded(n);
    std::fill_n(z, ld * ld, 0.0);
    std::fill_n(work, ld * (ld + 2), 0.0);
    const Decomposition to = {.z = z, .d = d, .e = e, .index = index};
    const Status status = decompose_directly(a, n, ld, work, to);
    if (status == Status::success)
        deliver(to, n, ld, values, vectors, positive_count);
    return status;
}

Status large(const double* a, int n, double* values, double* vectors, int& positive_count) noexcept
{
    const std::ptrdiff_t ld = leading_dimension(n), rows = padded(n), size = ld * rows;
    const bool direct = n <= s_direct_order;
    Block<double> z(size), pair(2 * rows), work(direct ? size + 2 * rows : 0);
    Block<int> index(n);
    if (!z || !pair || !work || !index)
        return Status::out_of_memory;
    const Decomposition to = {.z = z.data(), .d = pair.data(), .e = pair.data() + rows, .index = index.data()};
    Status status;
    if (direct) {
        status = decompose_directly(a, n, ld, work.data(), to);
    } else {
        copy_mirrored(a, n, to.z, ld, false);
        status = reduce_in_blocks(to.z, n, ld, to.d, to.e);
        if (status == Status::success)
            status = tridiagonal_ql(to.d, to.e, n, to.z, ld);
    }
    if (status == Status::success)
        deliver(to, n, ld, values, vectors, positive_count);
    return status;
}

} // namespace

Status eigen_symmetric(const double* a, int n, double* values, double* vectors, int& positive_count) noexcept
{
    positive_count = 0;
    if (n < 1)
        return Status::success;
    return n <= s_small_order ? small(a, n, values, vectors, positive_count)
                              : large(a, n, values, vectors, positive_count);
}

} // namespace qmml::matrix
