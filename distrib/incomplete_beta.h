// Regularised incomplete beta function I_x(a, b).
#pragma once

namespace qmml {

// The continued fraction of incomplete_beta; distr_error_value when 5000 steps do not suffice.
double beta_fraction(double a, double b, double x) noexcept;

// To six digits; distr_error_value for x < 0, x > 1 and where the fraction fails. a and b are not checked.
double incomplete_beta(double a, double b, double x) noexcept;
// The same under the guard of the export: a serious fault that the caller had unmasked gives distr_error_value too.
double guarded_incomplete_beta(double a, double b, double x) noexcept;

// P(F(df1, df2) > f), 1 for df1 < 0.01, df2 < 0.01 or f <= 0; distr_error_value where the incomplete beta fails.
double f_upper_tail(double df1, double df2, double f) noexcept;

// The incomplete beta ratio of the inverse functions. ln_beta is ln B(p, q); the sum ends with terms of at most
// `accuracy`. *budget holds the terms that may still be summed, and is counted down.
struct BetaRatio {
    double value;   // x where there is a fault
    double density; // the derivative by x, for 0 < x < 1
    bool fault;     // p <= 0, q <= 0, x outside [0, 1], arguments that are not numbers, budget spent
};
BetaRatio beta_ratio(double x, double p, double q, double ln_beta, double accuracy, int* budget) noexcept;

} // namespace qmml
