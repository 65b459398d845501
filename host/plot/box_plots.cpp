#include "host/data_file.h"
#include "host/plot/plots.h"
#include "host/summary.h"

#include <algorithm>
#include <limits>

namespace qmml::host::plot {

static void draw_box(Svg& svg, const Frame& frame, std::size_t band, const std::vector<double>& values)
{
    if (values.empty())
        return;
    const Summary s = summarise(values);
    const double reach = 1.5 * (s.upper_quartile - s.lower_quartile);
    double low = s.lower_quartile, high = s.upper_quartile;
    Points outside;
    const double centre = frame.band_centre(band), half = std::min(0.32 * frame.band_height(), 16.0);
    for (const double value : values)
        if (value < s.lower_quartile - reach || value > s.upper_quartile + reach) {
            outside.emplace_back(frame.x(value), centre);
        } else {
            low = std::min(low, value);
            high = std::max(high, value);
        }
    const auto upright = [&](double value, double size, double width, const char* colour) {
        svg.line({frame.x(value), centre - size}, {frame.x(value), centre + size}, colour, width);
    };
    svg.line({frame.x(low), centre}, {frame.x(s.lower_quartile), centre}, s_grey, 1.2);
    svg.line({frame.x(s.upper_quartile), centre}, {frame.x(high), centre}, s_grey, 1.2);
    upright(low, half / 2, 1.2, s_grey);
    upright(high, half / 2, 1.2, s_grey);
    const double left = frame.x(s.lower_quartile);
    svg.rectangle({left, centre - half}, frame.x(s.upper_quartile) - left, 2 * half, s_light_blue, s_blue);
    upright(s.median, half, 2.4, s_vermilion);
    if (!outside.empty())
        svg.dots(outside, 2.6, s_blue, 0.7);
}

double box_plots_height(std::size_t groups)
{
    return 92 + 38 * static_cast<double>(std::max<std::size_t>(groups, 2));
}

void draw_box_plots(Svg& svg, const Box& box, const Labels& labels, const std::vector<Group>& groups)
{
    double low = std::numeric_limits<double>::infinity(), high = -low;
    std::vector<std::string> names;
    std::vector<std::vector<double>> samples;
    for (const Group& group : groups) {
        samples.push_back(present(group.values));
        names.push_back(group.label + " (" + std::to_string(samples.back().size()) + ')');
        for (const double value : samples.back()) {
            low = std::min(low, value);
            high = std::max(high, value);
        }
    }
    if (low > high)
        return draw_remark(svg, box, labels.title, "no values");
    if (!can_be_drawn(low) || !can_be_drawn(high))
        return draw_remark(svg, box, labels.title, "too large to draw");
    const Frame frame(svg, box, labels, Axis::around(low, high), {}, names);
    for (std::size_t i = 0; i < samples.size(); ++i)
        draw_box(svg, frame, i, samples[i]);
}

} // namespace qmml::host::plot
