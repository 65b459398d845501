// Lowess over pairs in any order.
#pragma once

#include "host/plot/svg.h"

#include <vector>

namespace qmml::host {

struct Smoothing {
    double span = 2.0 / 3, delta = 0;
    int steps = 3;

    static constexpr std::size_t s_most_points = 4000; // of the library
};

// The smoothed y of each pair, a NaN for a pair with a missing value.
std::vector<double> smoothed(const std::vector<double>& x, const std::vector<double>& y, const Smoothing& smoothing);

// In ascending order of x, to draw.
plot::Points smooth_curve(const std::vector<double>& x, const std::vector<double>& smoothed);

// Complete pairs in ascending order of x; of more than the library smooths, evenly chosen ones.
void choose_pairs(std::vector<double>& x, std::vector<double>& y);

} // namespace qmml::host
