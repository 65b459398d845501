// Regularised incomplete gamma functions: P(a, x) the lower, Q(a, x) the upper.
#pragma once

namespace qmml {

// The engines to six digits, ln_gamma_a being ln Gamma(a). They are false where they fail: x <= 0 in the series (x < 0
// in the fraction is the caller's affair), 300 steps without convergence.
bool gamma_series(double a, double x, double ln_gamma_a, double* lower) noexcept;
bool gamma_fraction(double a, double x, double ln_gamma_a, double* upper) noexcept;

// Q(a, x) by these engines; distr_error_value for x < 0, a <= 0, x = 0 and where they fail.
double gamma_upper(double a, double x) noexcept;

// P(shape, x) to thirteen digits. ln_gamma_next is ln Gamma(shape + 1).
struct GammaRatio {
    double value;
    bool fault; // shape <= 0 or x < 0, with value 0; arguments that are not numbers, with value NaN
};
GammaRatio gamma_ratio(double x, double shape, double ln_gamma_shape, double ln_gamma_next) noexcept;
GammaRatio gamma_ratio(double x, double shape) noexcept;

} // namespace qmml
