// Locally weighted regression with robustness iterations.
#pragma once

namespace qmml::stattest {

inline constexpr int s_most_points = 4000;

// 2 <= n <= s_most_points. part is the part of the points in each neighbourhood, steps the number of robustness
// iterations; points within delta of a fitted one are interpolated. Any values are survived.
void lowess(const double* x, const double* y, int n, double part, int steps, double delta, double* smoothed,
            double* robustness, double* residuals) noexcept;

} // namespace qmml::stattest
