// Inverse of the incomplete beta ratio, and of the F distribution through it.
#pragma once

namespace qmml {

struct Quantile {
    double value;
    bool fault;
};

// How close the search comes: squared steps below `step` end it (0: a rule over the arguments), `ratio` is the accuracy
// of the incomplete beta ratio.
struct InverseBetaAccuracy {
    double step, ratio;
};
inline constexpr InverseBetaAccuracy standard_accuracy{0, 1e-15}, student_accuracy{1e-18, 1e-9};

// x with I_x(p, q) = alpha. Fault: p <= 0, q <= 0, alpha outside [0, 1], no convergence.
Quantile inverse_beta(double alpha, double p, double q, double ln_beta, InverseBetaAccuracy accuracy) noexcept;
Quantile inverse_beta(double alpha, double p, double q) noexcept;

// f with P(F(df1, df2) <= f) = p; 0 for p = 0. Fault: p < 0, p >= 1, df1 <= 0, df2 <= 0.
Quantile inverse_f(double p, double df1, double df2) noexcept;

} // namespace qmml
