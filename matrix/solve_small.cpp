#include "matrix/solve_small.h"

#include "core/break_check.h"
#include "matrix/solve_refined.h"

#include <utility>

namespace qmml::matrix {
namespace {

constexpr double s_tiny = 1e-20;

// Every loop is unrolled and rows are exchanged by selection, so that the elements stay in registers.
template <int N>
class SmallSystem {
public:
    explicit SmallSystem(const double* a) noexcept
    {
#pragma GCC unroll 36
        for (int i = 0; i < N * N; ++i)
            m_original[i] = a[i];
    }

    // The factors go to a.
    Status factor(double* a) noexcept
    {
        double scale[N], m[N][N]; // m[column][row]
#pragma GCC unroll 6
        for (int j = 0; j < N; ++j) {
            m_order[j] = j;
#pragma GCC unroll 6
            for (int i = 0; i < N; ++i)
                m[j][i] = a[i + j * N];
        }
#pragma GCC unroll 6
        for (int i = 0; i < N; ++i) {
            double largest = 0;
#pragma GCC unroll 6
            for (int j = 0; j < N; ++j) {
                const double v = std::fabs(m[j][i]);
                largest = is_greater(v, largest) ? v : largest;
            }
            if (is_less(largest, s_tiny))
                return Status::singular;
            scale[i] = 1.0 / largest;
        }
#pragma GCC unroll 6
        for (int j = 0; j < N; ++j) {
            if (break_requested())
                return Status::stopped;
            int row = j;
            double best = 0;
#pragma GCC unroll 6
            for (int i = j; i < N; ++i) {
                const double merit = scale[i] * std::fabs(m[j][i]);
                const bool better = is_greater_equal(merit, best);
                best = better ? merit : best;
                row = better ? i : row;
            }
#pragma GCC unroll 6
            for (int i = j + 1; i < N; ++i)
                if (row == i) {
#pragma GCC unroll 6
                    for (int k = 0; k < N; ++k)
                        std::swap(m[k][j], m[k][i]);
                    std::swap(m_order[j], m_order[i]);
                    scale[i] = scale[j]; // its own is not needed any more
                }
            const double pivot = is_equal(m[j][j], 0.0) ? s_tiny : m[j][j];
            m[j][j] = pivot;
#pragma GCC unroll 6
            for (int i = j + 1; i < N; ++i)
                m[j][i] /= pivot;
#pragma GCC unroll 6
            for (int k = j + 1; k < N; ++k)
#pragma GCC unroll 6
                for (int i = j + 1; i < N; ++i)
                    m[k][i] -= m[j][i] * m[k][j];
        }
#pragma GCC unroll 6
        for (int j = 0; j < N; ++j)
#pragma GCC unroll 6
            for (int i = 0; i < N; ++i)
                m_factors[i + j * N] = a[i + j * N] = m[j][i];
        return Status::success;
    }

    void substitute(double* x) const noexcept
    {
        double t[N];
#pragma GCC unroll 6
        for (int i = 0; i < N; ++i)
            t[i] = x[m_order[i]];
        bool leading = true; // what L holds for leading zeros does not matter
#pragma GCC unroll 6
        for (int k = 0; k < N - 1; ++k) {
            leading = leading && t[k] == 0;
            if (!leading)
#pragma GCC unroll 6
                for (int i = k + 1; i < N; ++i)
                    t[i] -= m_factors[i + k * N] * t[k];
        }
#pragma GCC unroll 6
        for (int k = N - 1; k >= 0; --k) {
            t[k] /= m_factors[k + k * N];
#pragma GCC unroll 6
            for (int i = 0; i < k; ++i)
                t[i] -= m_factors[i + k * N] * t[k];
        }
#pragma GCC unroll 6
        for (int i = 0; i < N; ++i)
            x[i] = t[i];
    }

    void residual(double* r, const double* x, const double* b) const noexcept
    {
#pragma GCC unroll 6
        for (int i = 0; i < N; ++i) {
            double sum = -b[i];
#pragma GCC unroll 6
            for (int k = 0; k < N; ++k)
                sum += m_original[i + k * N] * x[k];
            r[i] = sum;
        }
    }

private:
    double m_original[N * N], m_factors[N * N];
    int m_order[N]; // of the rows, after all exchanges
};

template <int N>
Status solve(double* a, double* b, int m) noexcept
{
    SmallSystem<N> system(a);
    if (const Status status = system.factor(a); status != Status::success)
        return status;
    for (int j = 0; j < m; ++j) {
        double rhs[N], correction[N];
        solve_refined(system, N, b + std::ptrdiff_t{N} * j, rhs, correction);
    }
    return Status::success;
}

} // namespace

Status solve_small(double* a, double* b, int n, int m) noexcept
{
    using Solver = Status (*)(double*, double*, int) noexcept;
    static constexpr Solver s_solvers[s_small_order] = {
        solve<1>, solve<2>, solve<3>, solve<4>, solve<5>, solve<6>,
    };
    return s_solvers[n - 1](a, b, m);
}

} // namespace qmml::matrix
