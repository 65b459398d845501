// Percentiles without a full sort.
#pragma once

#include <cstdint>

namespace qmml::descstat {

inline constexpr int s_most_percents = 3;

enum class Selection { done, bad_argument, no_memory };

struct PercentileRequest {
    const double* percents;
    int count = 1;
    bool single_counts_as_is = false; // a single value is every percentile, whatever method and percentage
    int method = 0;

    bool is_valid() const noexcept;
};

// Percentiles of the values that are not missing, whose number goes to *present; without any, nothing is written to
// results. The request is looked at when there are values.
Selection percentiles(const double* values, std::int64_t count, const PercentileRequest& request, double* results,
                      std::int64_t* present) noexcept;

// The percentile of all values, what is missing being above everything else.
Selection percentile_of_all(const double* values, std::int64_t count, int method, double percent,
                            double* result) noexcept;

} // namespace qmml::descstat
