// ln Gamma, and ways not to compute it twice.
#pragma once

#include <limits>

namespace qmml {

// distr_error_value for x <= 0. Raises a serious fault only for a NaN, x below 2^-50 and x above 2^1000.
double ln_gamma(double x) noexcept;

// The same bits, but whole numbers up to 1024 are looked up.
double ln_gamma_tabulated(double x) noexcept;

// Keeps the value of its last argument. Distribution functions are called in runs with the same parameters; one such
// object per thread stands before each log-gamma of parameters.
class LnGammaMemo {
public:
    double operator()(double x) noexcept
    {
        if (x != m_x) {
            m_value = ln_gamma_tabulated(x);
            m_x = x;
        }
        return m_value;
    }

private:
    double m_x = std::numeric_limits<double>::quiet_NaN(); // equals no argument
    double m_value = 0;
};

} // namespace qmml
