#include "matrix/tridiagonal.h"

#include "core/break_check.h"
#include "core/compare.h"

#include <algorithm>

namespace qmml::matrix {

Reflection make_reflection(double* u, int count) noexcept
{
    const TridiagonalKernels& kernels = *s_tridiagonal_kernels;
    const int rows = padded(count);
    std::fill(u + count, u + rows, 0.0);
    const double last = u[count - 1];
    const double scale = count > 1 ? kernels.sum_of_magnitudes(u, rows) : 0;
    if (is_equal(scale, 0.0))
        return {.off_diagonal = last, .h = 0};
    return kernels.reflect(u, count, scale);
}

Status reduce_directly(double* a, double* q, int n, std::ptrdiff_t ld, double* d, double* e, double* work) noexcept
{
    const TridiagonalKernels& kernels = *s_tridiagonal_kernels;
    const int all_rows = padded(n);
    double* const u = work;
    double* const w = work + all_rows;
    for (int i = 0; i < n; ++i)
        q[i * ld + i] = 1;
    for (int i = n - 1; i > 0; --i) {
        if (break_requested())
            return Status::stopped;
        std::copy_n(a + i * ld, i, u);
        d[i] = a[i * ld + i];
        const Reflection reflection = make_reflection(u, i);
        e[i] = reflection.off_diagonal;
        if (reflection.h == 0)
            continue;
        kernels.multiply(w, a, ld, padded(i), i, u);
        kernels.correct(w, u, i, reflection.h);
        kernels.update(a, ld, padded(i), i, u, w);
        kernels.accumulate(q, ld, all_rows, i, u, reflection.h, w);
    }
    d[0] = a[0];
    return Status::success;
}

} // namespace qmml::matrix
