// ln Gamma, and ways not to compute it twice.
#pragma once

#include "distrib/guard.h"

namespace qmml {

// distr_error_value for x <= 0. Raises a serious fault only for a NaN, x below 2^-50 and x above 2^1000.
double ln_gamma(double x) noexcept;

// The same bits, but whole numbers up to 1024 are looked up.
double ln_gamma_tabulated(double x) noexcept;

// Where ln_gamma raises no serious fault.
inline bool calm_ln_gamma(double x) noexcept
{
    return between(x, 0x1p-50, 0x1p1000);
}

// Keeps the value of its last calm argument; any other one has to raise its fault each time. Distribution functions are
// called in runs with the same parameters: one such object per thread stands before each log-gamma of parameters.
class LnGammaMemo {
public:
    double operator()(double x) noexcept
    {
        if (!same_bits(x, m_x)) {
            if (!calm_ln_gamma(x))
                return ln_gamma_tabulated(x);
            m_value = ln_gamma_tabulated(x);
            m_x = x;
        }
        return m_value;
    }

private:
    double m_x = 0; // not calm
    double m_value = 0;
};

} // namespace qmml
