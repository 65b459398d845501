#pragma once

#include <cmath>

namespace qmml::matrix {

// A product of numbers from 1e-25 on, to twice the precision of a number and without overflow, so that a limit is
// compared with what the factors really make. The product itself must not stay below 1e-25 either.
class ScaledProduct {
public:
    void multiply(double factor) noexcept
    {
        if (factor >= s_large) [[unlikely]] {
            m_infinite |= std::isinf(factor);
            factor *= s_down;
            ++m_scalings;
        }
        const double p = m_high * factor;
        // The rounding error of the product: Dekker, A floating-point technique for extending the available precision,
        // Numer. Math. 18 (1971), 224-242.
        const Halves a = split(m_high), b = split(factor);
        const double error = ((a.high * b.high - p) + a.high * b.low + a.low * b.high) + a.low * b.low;
        m_low = m_low * factor + error;
        m_high = p;
        if (m_high >= s_large) [[unlikely]]
            scale(s_down, 1);
        else if (m_scalings > 0 && m_high < s_small) [[unlikely]]
            scale(s_up, -1);
    }

    bool less(double limit) const noexcept { return compare(limit) < 0.0; }
    bool greater(double limit) const noexcept { return compare(limit) > 0.0; }

    // When it is no number too large.
    double value() const noexcept
    {
        const double product = m_high + m_low;
        return m_scalings > 0 ? product * s_up : product;
    }

private:
    static constexpr double s_large = 0x1p400, s_small = 0x1p-100;
    static constexpr double s_up = 0x1p500, s_down = 0x1p-500;

    struct Halves {
        double high, low;
    };

    static Halves split(double x) noexcept
    {
        const double t = x * 134217729.0; // 2^27 + 1
        const double high = t - (t - x);
        return {high, x - high};
    }

    void scale(double by, int count) noexcept
    {
        m_high *= by;
        m_low *= by;
        m_scalings += count;
    }

    // Negative, zero or positive as the product is less than the limit, equal to it or greater. Scaled twice, it is at
    // least 2^900.
    double compare(double limit) const noexcept
    {
        if (m_infinite || m_scalings > 1)
            return 1.0;
        if (m_scalings == 1)
            limit *= s_down;
        return (m_high - limit) + m_low;
    }

    double m_high = 1.0;
    double m_low = 0.0;
    long m_scalings = 0; // by s_down
    bool m_infinite = false;
};

} // namespace qmml::matrix
