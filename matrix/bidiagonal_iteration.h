// The implicitly shifted QR iteration of Golub and Reinsch (Numer. Math. 14, 1970) on an upper bidiagonal matrix.
#pragma once

#include "core/compare.h"
#include "matrix/status.h"

#include <algorithm>
#include <cmath>
#include <limits>

namespace qmml::matrix {

// Where the rotations go when nobody wants vectors. Every sink has these functions.
struct NoVectors {
    // A sweep over the pairs of columns (j, j + 1), j from first to last.
    void begin_sweep(int /*first*/, int /*last*/) noexcept {}
    void rotate_right(int /*j*/, double /*c*/, double /*s*/) noexcept {}
    void rotate_left(int /*j*/, double /*c*/, double /*s*/) noexcept {}
    void end_sweep() noexcept {}
    // Outside a sweep, any two columns.
    void rotate_left_apart(int /*j*/, int /*k*/, double /*c*/, double /*s*/) noexcept {}
    void negate_right(int /*k*/) noexcept {}
};

template <class Sink>
class BidiagonalIteration {
public:
    // diagonal[0..n), super[1..n), super[0] being 0.
    BidiagonalIteration(double* diagonal, double* super, int n, Sink& sink) noexcept
        : m_d(diagonal), m_e(super), m_n(n), m_sink(sink)
    {
    }

    Status run() noexcept
    {
        bring_near_one();
        for (int k = m_n - 1; k >= 0; --k)
            for (int pass = 1;; ++pass) {
                const int l = split(k);
                if (l == k)
                    break;
                if (pass == s_most_passes)
                    return Status::not_converged;
                chase(l, k);
            }
        for (int k = 0; k < m_n; ++k) {
            m_d[k] *= m_unscale;
            if (is_less(m_d[k], 0.0)) {
                m_d[k] = -m_d[k];
                m_sink.negate_right(k);
            }
        }
        return Status::success;
    }

private:
    static constexpr int s_most_passes = 300;

    // A power of two, which changes no digit, makes room for the products of four elements in chase(). What overflows
    // as the square of a length is left to do so.
    void bring_near_one() noexcept
    {
        double bound = 0;
        for (int i = 0; i < m_n; ++i) {
            const double sum = std::abs(m_d[i]) + std::abs(m_e[i]);
            if (is_nan(sum) || sum > bound)
                bound = sum;
        }
        if (bound > 0 && bound < 0x1p511) {
            const int exponent = std::max(std::ilogb(bound), -1000);
            const double scale = std::ldexp(1.0, -exponent);
            m_unscale = std::ldexp(1.0, exponent);
            bound *= scale;
            for (int i = 0; i < m_n; ++i) {
                m_d[i] *= scale;
                m_e[i] *= scale;
            }
        }
        m_bound = bound;
        m_clear = bound > 0x1p-100 ? bound * 0x1p-40 : std::numeric_limits<double>::infinity();
    }

    bool negligible(double x) const noexcept
    {
        const double magnitude = std::abs(x);
        return !(magnitude > m_clear) && is_equal(magnitude + m_bound, m_bound);
    }

    // Where the block begins that ends at k; when it is k alone, the singular value is made positive.
    int split(int k) noexcept
    {
        int l = k;
        while (!negligible(m_e[l])) {
            if (negligible(m_d[l - 1])) {
                cancel(l, k);
                break;
            }
            --l;
        }
        return l;
    }

    // Removes super[l], diagonal[l - 1] being nothing.
    void cancel(int l, int k) noexcept
    {
        double c = 0, s = 1;
        for (int i = l; i <= k; ++i) {
            const double f = s * m_e[i];
            m_e[i] = c * m_e[i];
            if (negligible(f))
                return;
            const double g = m_d[i];
            const double h = std::sqrt(f * f + g * g);
            m_d[i] = h;
            c = g / h;
            s = -f / h;
            m_sink.rotate_left_apart(l - 1, i, c, s);
        }
    }

    // The first column of the shifted product, times x: only its direction matters. The shift is an eigenvalue of the
    // bottom minor.
    void start_of_chase(int l, int k, double& f, double& h) const noexcept
    {
        const double x = m_d[l], y = m_d[k - 1], z = m_d[k], before = m_e[k - 1], last = m_e[k];
        const double difference = (y - z) * (y + z) + (before - last) * (before + last), twice = 2 * last * y;
        const double root = std::sqrt(difference * difference + twice * twice);
        const double quotient = y * twice / (difference + (difference >= 0 ? root : -root));
        f = (x - z) * (x + z) + last * (quotient - last);
        h = x * m_e[l + 1];
    }

    static bool ordinary(double square) noexcept { return square > 0x1p-900 && square < 0x1p900; }

    // A step's two rotations follow from f and h, and from the column of the bulge that they leave: here x, g over 0,
    // y.
    struct Step {
        double length_right, c_right, s_right, length_left, c_left, s_left, f, x;
    };

    // One long chain of roots and quotients, each waiting for the one before it. Therefore the left rotation is taken
    // from multiples of its legs, which are known before the right one's root is, a root and its reciprocal are worked
    // out side by side, and x comes from the determinant.
    static bool quick_step(double f, double h, double x, double g, double y, Step& step) noexcept
    {
        const double leg = x * f + g * h, other_leg = y * h;
        const double square_right = f * f + h * h, square_left = leg * leg + other_leg * other_leg;
        if (!ordinary(square_right) || !ordinary(square_left)) [[unlikely]]
            return false;
        const double right = std::sqrt(square_right), left = std::sqrt(square_left);
        const double inverse_right = right * (1 / square_right), inverse_left = left * (1 / square_left);
        step.length_right = right;
        step.c_right = f * inverse_right;
        step.s_right = h * inverse_right;
        step.length_left = left * inverse_right;
        step.c_left = leg * inverse_left;
        step.s_left = other_leg * inverse_left;
        step.f = (leg * (g * f - x * h) + other_leg * (y * f)) * inverse_right * inverse_left;
        step.x = x * y * right * inverse_left;
        return true;
    }

    static Step plain_step(double f, double h, double x, double g, double y) noexcept
    {
        Step step{};
        step.length_right = std::sqrt(f * f + h * h);
        step.c_right = step.c_left = f / step.length_right;
        step.s_right = step.s_left = h / step.length_right;
        f = x * step.c_right + g * step.s_right;
        g = g * step.c_right - x * step.s_right;
        h = y * step.s_right;
        y *= step.c_right;
        step.length_left = std::sqrt(f * f + h * h);
        if (step.length_left != 0.0) {
            step.c_left = f / step.length_left;
            step.s_left = h / step.length_left;
        }
        step.f = step.c_left * g + step.s_left * y;
        step.x = step.c_left * y - step.s_left * g;
        return step;
    }

    void chase(int l, int k) noexcept
    {
        m_sink.begin_sweep(l, k - 1);
        double x = m_d[l], g = m_e[l + 1], f, h;
        start_of_chase(l, k, f, h);
        for (int j = l; j < k; ++j) {
            const double y = m_d[j + 1], next = j + 1 < k ? m_e[j + 2] : 0.0;
            Step step;
            if (!quick_step(f, h, x, g, y, step)) [[unlikely]]
                step = plain_step(f, h, x, g, y);
            m_e[j] = step.length_right;
            m_d[j] = step.length_left;
            m_sink.rotate_right(j, step.c_right, step.s_right);
            m_sink.rotate_left(j, step.c_left, step.s_left);
            f = step.f;
            x = step.x;
            h = step.s_left * next;
            g = step.c_left * next;
        }
        m_e[l] = 0;
        m_e[k] = f;
        m_d[k] = x;
        m_sink.end_sweep();
    }

    double* const m_d;
    double* const m_e;
    const int m_n;
    Sink& m_sink;
    double m_bound = 0, m_clear = 0, m_unscale = 1;
};

} // namespace qmml::matrix
