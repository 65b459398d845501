#include "host/picture.h"

#include "host/error.h"
#include "host/output_file.h"
#include "host/table.h"

#include <qmml/descstat.h>
#include <qmml/distrib.h>

#include <cmath>

namespace qmml::host {

static constexpr std::size_t s_most_groups = 60;

plot::Density normal_density(const std::vector<double>& sample)
{
    int count = 0;
    double mean = 0, sd = 0;
    GetNormalCurveStats(sample.data(), static_cast<int>(sample.size()), &count, &mean, &sd);
    if (!(sd > 1e-12 * std::fabs(mean)) || std::isinf(sd)) // constant, or nothing but round-off
        return {};
    return {"normal density, mean " + rounded(mean, 4) + ", sd " + rounded(sd, 4),
            [=](double x) { return d_normal(x, mean, sd); }};
}

plot::Density fitted_density(const FitFamily& family, const Parameters& parameters)
{
    return {std::string(family.title) + ", " + parameters_text(family, parameters),
            [&family, parameters](double x) { return family.density(x, parameters); }, family.discrete};
}

plot::Svg histogram_picture(const std::string& name, const std::vector<double>& values, const plot::Density& density)
{
    plot::Svg svg(s_panel.width, s_panel.height, "Histogram of " + name);
    draw_histogram(svg, s_panel, name, values, density);
    return svg;
}

plot::Svg quantile_picture(const std::string& name, const std::vector<double>& values)
{
    plot::Svg svg(s_panel.width, s_panel.height, "Normal quantile plot of " + name);
    draw_normal_quantiles(svg, s_panel, name, values);
    return svg;
}

plot::Svg group_picture(const Groups& groups)
{
    const std::string title = groups.value_name + " by " + groups.group_name;
    if (groups.groups.size() > s_most_groups)
        throw Error(std::to_string(groups.groups.size()) + " groups are too many to draw");
    const plot::Box box = {0, 0, s_panel.width, plot::box_plots_height(groups.groups.size())};
    plot::Svg svg(box.width, box.height, "Box plots of " + title);
    draw_box_plots(svg, box, {title, groups.value_name, groups.group_name, ""}, groups.groups);
    return svg;
}

plot::Svg scatter_picture(const plot::Labels& labels, const plot::Points& points, const plot::Points& curve)
{
    plot::Svg svg(s_panel.width, s_panel.height, "Scatter of " + labels.title);
    draw_scatter(svg, s_panel, labels, points, curve);
    return svg;
}

plot::Points points_of(const std::vector<double>& x, const std::vector<double>& y)
{
    plot::Points points;
    for (std::size_t i = 0; i < x.size(); ++i)
        points.emplace_back(x[i], y[i]);
    return points;
}

void write_picture(const std::string& file, const plot::Svg& picture)
{
    OutputFile out(file);
    out.write(picture.document());
    out.commit();
}

} // namespace qmml::host
