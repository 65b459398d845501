#include "core/compare.h"
#include "matrix/rotations.h"
#include "matrix/tridiagonal.h"
#include "matrix/tridiagonal_kernels.h"

#include <cmath>

namespace qmml::matrix {
namespace {

constexpr int s_iteration_limit = 300; // per eigenvalue

// Rotations of a small matrix, applied after each sweep.
class SmallSweeps {
public:
    SmallSweeps(double* z, std::ptrdiff_t ld, int n) noexcept : m_z(z), m_ld(ld), m_rows(padded(n)) {}
    void begin(int first, int last) noexcept
    {
        m_first = first;
        m_last = last;
    }
    void set(int i, double cosine, double sine) noexcept
    {
        m_cosines[i] = cosine;
        m_sines[i] = sine;
    }
    void end() noexcept { s_tridiagonal_kernels->rotate(m_z, m_ld, m_rows, m_first, m_last, m_cosines, m_sines); }

private:
    double* const m_z;
    const std::ptrdiff_t m_ld;
    const int m_rows;
    int m_first = 0, m_last = 0;
    double m_cosines[s_small_order], m_sines[s_small_order];
};

class QueuedSweeps : public RotationQueue {
public:
    void end() noexcept {}
};

bool is_negligible(double off_diagonal, double above, double below) noexcept
{
    const double size = std::abs(above) + std::abs(below), e = std::abs(off_diagonal);
    if (e > size * 0x1p-40 + 1e-300) // the quick answer to most cases
        return false;
    return is_equal(size + e, size);
}

// The first of the off-diagonal elements from l on that is negligible.
int split(const double* d, const double* e, int n, int l) noexcept
{
    int m = l;
    while (m < n - 1 && !is_negligible(e[m], d[m], d[m + 1]))
        ++m;
    return m;
}

// One sweep over the block l..m, e[i] standing between d[i] and d[i + 1].
template <class Sweeps>
void sweep(double* d, double* e, int l, int m, Sweeps& sweeps) noexcept
{
    double g = (d[l + 1] - d[l]) / (2 * e[l]);
    g = d[m] - d[l] + e[l] / (g + std::copysign(std::sqrt(g * g + 1), g));
    double s = 1, c = 1, p = 0;
    sweeps.begin(l, m - 1);
    for (int i = m - 1; i >= l; --i) {
        const double f = s * e[i], b = c * e[i];
        if (f == 0 && g == 0) { // the block has come apart here
            e[i + 1] = 0;
            d[i + 1] -= p;
            e[m] = 0;
            for (; i >= l; --i)
                sweeps.set(i, 1, 0);
            sweeps.end();
            return;
        }
        // Each step waits for the last one: the quotients by the square go past the square root, and 1 / sqrt(x) is
        // sqrt(x) * (1 / x).
        const double below = d[i + 1] - p, difference = d[i] - below;
        if (is_greater_equal(std::abs(f), std::abs(g))) {
            const double t = g / f, square = t * t + 1, r = std::sqrt(square), inverse = 1 / square;
            const double change = (difference + 2 * t * b) * inverse;
            s = r * inverse;
            c = t * s;
            e[i + 1] = f * r;
            p = change;
            g = t * change - b;
        } else {
            const double t = f / g, square = t * t + 1, r = std::sqrt(square), inverse = 1 / square;
            const double change = (difference * t + 2 * b) * inverse;
            c = r * inverse;
            s = t * c;
            e[i + 1] = g * r;
            p = t * change;
            g = change - b;
        }
        d[i + 1] = below + p;
        sweeps.set(i, c, s);
    }
    d[l] -= p;
    e[l] = g;
    e[m] = 0;
    sweeps.end();
}

template <class Sweeps>
Status iterate(double* d, double* e, int n, Sweeps& sweeps) noexcept
{
    for (int l = 0; l < n; ++l)
        for (int iterations = 0;; ++iterations) {
            const int m = split(d, e, n, l);
            if (m == l)
                break;
            if (iterations == s_iteration_limit)
                return Status::singular;
            sweep(d, e, l, m, sweeps);
        }
    return Status::success;
}

} // namespace

Status tridiagonal_ql(double* d, double* e, int n, double* z, std::ptrdiff_t ld) noexcept
{
    for (int i = 1; i < n; ++i)
        e[i - 1] = e[i];
    e[n - 1] = 0;
    if (n <= s_small_order) {
        SmallSweeps sweeps(z, ld, n);
        return iterate(d, e, n, sweeps);
    }
    QueuedSweeps sweeps;
    if (!sweeps.attach(z, padded(n), ld, n, RotationQueue::Direction::down))
        return Status::out_of_memory;
    const Status status = iterate(d, e, n, sweeps);
    sweeps.flush();
    return status;
}

} // namespace qmml::matrix
