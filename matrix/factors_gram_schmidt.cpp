#include "core/break_check.h"
#include "core/compare.h"
#include "matrix/factors.h"

#include <cmath>
#include <cstddef>

namespace qmml::matrix {
namespace {

double dot(const double* x, const double* y, int n) noexcept
{
    double sum = 0;
    for (int i = 0; i < n; ++i)
        sum += x[i] * y[i];
    return sum;
}

} // namespace

// The triangular coefficients go nowhere, so they are not kept; more columns than rows fail like other dependent ones.
Status orthonormalise_in_place(double* a, int rows, int cols) noexcept
{
    const std::ptrdiff_t stride = rows < 1 ? 0 : rows;
    for (std::ptrdiff_t k = 0; k < cols; ++k) {
        if (break_requested())
            return Status::stopped;
        double* x = a + k * stride;
        const double square = dot(x, x, rows);
        if (is_less(square, 1e-12))
            return Status::singular;
        const double norm = std::sqrt(square);
        for (std::ptrdiff_t j = k + 1; j < cols; ++j) {
            if (break_requested())
                return Status::stopped;
            double* y = a + j * stride;
            const double multiple = dot(x, y, rows) / square;
            for (int i = 0; i < rows; ++i)
                y[i] -= multiple * x[i];
        }
        for (int i = 0; i < rows; ++i)
            x[i] /= norm;
    }
    return Status::success;
}

} // namespace qmml::matrix
