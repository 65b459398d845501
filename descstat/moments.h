// Sums and moments of the values that are not missing. Up to 512 of them by the plain recurrences; beyond that in
// blocks of 512 that are merged in order, so that the additions depend on the number of values and on nothing else. A
// result that is not finite is that of the recurrences.
#pragma once

#include <cstdint>

namespace qmml::descstat {

struct Sum {
    std::int64_t count;
    double value;
};
Sum sum_of(const double* values, std::int64_t count) noexcept;

struct Mean {
    std::int64_t count;
    double value;
};
Mean mean_of(const double* values, std::int64_t count) noexcept;

struct Moments {
    std::int64_t count;
    double mean, variance; // denominator count - 1; 0 for a single value
};
Moments moments_of(const double* values, std::int64_t count) noexcept;

// The same with the recurrence on the sum of squared deviations: the last bits may differ.
Moments normal_moments_of(const double* values, std::int64_t count) noexcept;

} // namespace qmml::descstat
