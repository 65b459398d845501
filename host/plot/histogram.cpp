#include "host/data_file.h"
#include "host/plot/plots.h"
#include "host/summary.h"

#include <algorithm>
#include <cmath>

namespace qmml::host::plot {
namespace {

constexpr double s_most_bins = 60;

struct Bins {
    double start = 0, width = 1;
    std::vector<double> counts;
};

// The largest round number that is not much above.
double round_width(double width)
{
    const double power = std::pow(10, std::floor(std::log10(1.25 * width)));
    double result = power;
    for (const double factor : {2.0, 2.5, 5.0})
        if (factor * power <= 1.25 * width)
            result = factor * power;
    return result;
}

// As wide as Freedman and Diaconis (1981) advise, rounded; whole numbers lie in the middle of theirs.
Bins count_in_bins(const std::vector<double>& values, const Summary& summary)
{
    const Axis range = Axis::around(summary.minimum, summary.maximum, 0);
    const double spread = range.high - range.low;
    const double quartile_range = summary.upper_quartile - summary.lower_quartile;
    double wanted = 2 * quartile_range / std::cbrt(static_cast<double>(values.size()));
    if (!(wanted > 0))
        wanted = spread / (1 + std::log2(static_cast<double>(values.size())));
    wanted = std::clamp(wanted, spread / s_most_bins, spread / 4);

    Bins bins;
    const bool whole =
        std::ranges::all_of(values, [](double value) { return value == std::floor(value) && std::fabs(value) < 1e9; });
    bins.width = whole ? std::floor(round_width(std::max(wanted, 1.0))) : round_width(wanted);
    const double offset = whole && bins.width < 2 ? 0.5 : 0;
    bins.start = (std::floor(summary.minimum / bins.width + offset) - offset) * bins.width;
    const double last = std::floor((summary.maximum - bins.start) / bins.width);
    bins.counts.resize(static_cast<std::size_t>(std::clamp(last, 0.0, 3 * s_most_bins)) + 1);
    for (const double value : values) {
        const double bin = std::clamp(std::floor((value - bins.start) / bins.width), 0.0, last);
        ++bins.counts[std::min(static_cast<std::size_t>(bin), bins.counts.size() - 1)];
    }
    return bins;
}

Points expected_counts(const Density& density, const Axis& x, double scale)
{
    Points points;
    if (!density.at)
        return points;
    const auto add = [&](double at) { points.emplace_back(at, scale * density.at(at)); };
    if (density.discrete && x.high - x.low < 1000) {
        for (double k = std::ceil(x.low); k <= x.high; ++k)
            add(k);
    } else {
        constexpr int steps = 240;
        for (int i = 0; i <= steps; ++i)
            add(x.low + (x.high - x.low) * i / steps);
    }
    return points;
}

} // namespace

void draw_histogram(Svg& svg, const Box& box, const std::string& name, const std::vector<double>& values,
                    const Density& density)
{
    const std::vector<double> data = present(values);
    if (data.empty())
        return draw_remark(svg, box, name, "no values");
    if (!std::ranges::all_of(data, can_be_drawn))
        return draw_remark(svg, box, name, "too large to draw");
    const Bins bins = count_in_bins(data, summarise(data));
    const double end = bins.start + bins.width * static_cast<double>(bins.counts.size());
    const Axis x = Axis::around(bins.start, end, 0.03);
    const Points curve = expected_counts(density, x, static_cast<double>(data.size()) * bins.width);

    // Room for the curve too, unless it shoots up to a pole.
    const double highest = std::ranges::max(bins.counts);
    double top = highest;
    for (const auto& point : curve)
        if (point.second < 1.6 * highest)
            top = std::max(top, point.second);
    const Frame frame(svg, box, {name, name, "count", density.name}, x, {0, 1.05 * top, 1});
    for (std::size_t i = 0; i < bins.counts.size(); ++i)
        if (bins.counts[i] > 0) {
            const double left = bins.start + bins.width * static_cast<double>(i);
            const Point corner = frame.at(left, bins.counts[i]);
            svg.rectangle(corner, frame.x(left + bins.width) - corner.first, frame.y(0) - corner.second, s_light_blue,
                          s_blue);
        }
    frame.curve(curve);
}

} // namespace qmml::host::plot
