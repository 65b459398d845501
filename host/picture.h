// The pictures that the commands write with --svg.
#pragma once

#include "host/fit_families.h"
#include "host/groups.h"
#include "host/plot/plots.h"

#include <string>
#include <vector>

namespace qmml::host {

inline constexpr plot::Box s_panel = {0, 0, 460, 330};

plot::Density
normal_density(const std::vector<double>& sample); // with its mean and deviation; none where it is constant
plot::Density fitted_density(const FitFamily& family, const Parameters& parameters);

plot::Svg histogram_picture(const std::string& name, const std::vector<double>& values, const plot::Density& density);
plot::Svg quantile_picture(const std::string& name, const std::vector<double>& values);
plot::Svg group_picture(const Groups& groups); // an Error for too many groups
plot::Svg scatter_picture(const plot::Labels& labels, const plot::Points& points, const plot::Points& curve);

// Columns as pairs; a missing value stays a NaN.
plot::Points points_of(const std::vector<double>& x, const std::vector<double>& y);

void write_picture(const std::string& file, const plot::Svg& picture);

} // namespace qmml::host
