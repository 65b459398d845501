// The tests of the library on samples, their results in words. "level" is the probability of an error of the first kind
// up to which a conclusion is drawn. Each throws an Error where there is nothing to test.
#pragma once

#include "host/finding.h"
#include "host/fit_families.h"
#include "host/groups.h"

namespace qmml::host {

Finding analysis_of_variance(const Groups& groups, double level);
Finding levene_test(const Groups& groups, double level);
Finding kruskal_wallis_test(const Groups& groups, double level);

// Samples come without missing values.
Finding shapiro_test(const std::string& name, const std::vector<double>& sample, double level);
Finding lilliefors_test(const std::string& name, const std::vector<double>& sample, double level);
Finding kolmogorov_test(const std::string& name, const std::vector<double>& sample, const FitFamily& family,
                        const Parameters& parameters, double level);

// Values of several variables, row by row; those with a missing value are left out.
Finding correlation_test(const Column& x, const Column& y, double level);
struct Plane {
    double b0, b1, b2;
};
Finding multiple_correlation_test(const Column& x1, const Column& x2, const Column& y, bool through_origin,
                                  double level, Plane& plane);

// Independence of two classifications, each row of the file counting once or, with weights, that many times.
Finding chi_square_test(const Column& x, const Column& y, const Column* weights, double level);

struct PairStatistics {
    double r = 0, t = 0, df = 0, p = 1, intercept = 0, slope = 0, mean_x = 0, mean_y = 0, sd_x = 0, sd_y = 0, count = 0;
};
// 0, or the library's code: 2 too few pairs, 1 no variance, 99 no memory.
int correlate(const std::vector<double>& x, const std::vector<double>& y, PairStatistics& result);

} // namespace qmml::host
