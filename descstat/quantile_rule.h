// Which order statistics make up a percentile, and how.
#pragma once

#include <cstdint>

namespace qmml::descstat {

enum class QuantileForm {
    weighted, // (1 - fraction) * x(lower) + fraction * x(upper)
    halfway,  // (x(upper) + x(lower)) / 2
    step      // x(lower) + (x(upper) - x(lower)) * fraction
};

// Positions count from 1; where one order statistic is all, both are its.
struct QuantileRule {
    std::int64_t lower, upper;
    QuantileForm form;
    double fraction;

    double value(double at_lower, double at_upper) const noexcept;
};

// The method is 1 to 6 and the percentage 0.01 to 99.99.
bool is_percentile(int method, double percent) noexcept;

// Requires is_percentile and at least one value.
QuantileRule quantile_rule(std::int64_t count, int method, double percent) noexcept;

} // namespace qmml::descstat
