// The four pictures of the statistics commands. Missing values are left out; what cannot be drawn becomes a remark.
#pragma once

#include "host/plot/frame.h"

#include <functional>

namespace qmml::host::plot {

struct Density {
    std::string name; // empty: no curve
    std::function<double(double)> at = {};
    bool discrete = false; // a probability at each whole number
};

void draw_histogram(Svg& svg, const Box& box, const std::string& name, const std::vector<double>& values,
                    const Density& density);

struct Group {
    std::string label;
    std::vector<double> values;
};

// Median and quartiles as the library's current percentile method has them, whiskers to the last value within one and a
// half times the distance of the quartiles.
void draw_box_plots(Svg& svg, const Box& box, const Labels& labels, const std::vector<Group>& groups);
double box_plots_height(std::size_t groups); // that looks well

// The points, and a curve whose points come in ascending order of x.
void draw_scatter(Svg& svg, const Box& box, const Labels& labels, const Points& points, const Points& curve);

// Ordered values against the quantiles of a normal distribution; the line is the one with their mean and deviation.
void draw_normal_quantiles(Svg& svg, const Box& box, const std::string& name, const std::vector<double>& values);

} // namespace qmml::host::plot
