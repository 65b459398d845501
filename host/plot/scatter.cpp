#include "host/data_file.h"
#include "host/plot/plots.h"

#include <algorithm>
#include <cmath>

namespace qmml::host::plot {

static constexpr std::size_t s_most_dots = 4000; // more make a picture heavy, not clearer

// Every so many-th of a long list, the first and the last among them.
static Points thinned(const Points& points)
{
    if (points.size() <= s_most_dots)
        return points;
    Points result;
    const double step = static_cast<double>(points.size() - 1) / static_cast<double>(s_most_dots - 1);
    for (std::size_t i = 0; i < s_most_dots; ++i)
        result.push_back(points[static_cast<std::size_t>(std::round(step * static_cast<double>(i)))]);
    return result;
}

void draw_scatter(Svg& svg, const Box& box, const Labels& labels, const Points& points, const Points& curve)
{
    Points data;
    std::ranges::copy_if(points, std::back_inserter(data),
                         [](const Point& p) { return !std::isnan(p.first) && !std::isnan(p.second); });
    if (data.empty())
        return draw_remark(svg, box, labels.title, "no pairs of values");
    if (!std::ranges::all_of(data, [](const Point& p) { return can_be_drawn(p.first) && can_be_drawn(p.second); }))
        return draw_remark(svg, box, labels.title, "too large to draw");
    std::ranges::sort(data);
    const auto [lowest, highest] = std::ranges::minmax(data, {}, &Point::second);
    const Frame frame(svg, box, labels, Axis::around(data.front().first, data.back().first),
                      Axis::around(lowest.second, highest.second));
    Points places;
    for (const auto& [x, y] : thinned(data))
        places.push_back(frame.at(x, y));
    svg.dots(places, 3, s_blue, data.size() > 400 ? 0.3 : 0.55);
    frame.curve(curve);
}

} // namespace qmml::host::plot
