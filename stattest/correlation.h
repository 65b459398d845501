// Correlation and regression on one and two predictors.
#pragma once

namespace qmml::stattest {

struct SimpleCorrelation {
    double intercept_yx, slope_yx, intercept_xy, slope_xy, r, t, df, p, mean_x, mean_y, sd_x, sd_y, count;
};

struct MultipleCorrelation {
    double b0, b1, b2, r, f, df, p, mean_x1, mean_x2, mean_y, sd_x1, sd_y, count;
};

namespace correlation {
inline constexpr int s_no_variance = 1, s_too_few = 2, s_collinear = 3;
}

bool simple_correlation(const double* x, const double* y, int n, double missing, SimpleCorrelation& result,
                        int& error) noexcept;

bool multiple_correlation(const double* x1, const double* x2, const double* y, int n, double missing,
                          bool through_origin, MultipleCorrelation& result, int& error) noexcept;

} // namespace qmml::stattest
