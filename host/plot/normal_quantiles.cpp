#include "host/data_file.h"
#include "host/plot/plots.h"

#include <qmml/descstat.h>
#include <qmml/distrib.h>

#include <algorithm>

namespace qmml::host::plot {

void draw_normal_quantiles(Svg& svg, const Box& box, const std::string& name, const std::vector<double>& values)
{
    std::vector<double> data = present(values);
    if (data.size() < 2)
        return draw_remark(svg, box, name, "fewer than two values");
    if (!std::ranges::all_of(data, can_be_drawn))
        return draw_remark(svg, box, name, "too large to draw");
    const int n = static_cast<int>(data.size());
    SortDoubleArray(data.data(), n);
    int count = 0;
    double mean = 0, sd = 0;
    GetNormalCurveStats(data.data(), n, &count, &mean, &sd);

    // Blom's plotting positions (1958).
    const auto quantile = [&](int i) { return v_normal((i + 1 - 0.375) / (n + 0.25), 0, 1); };
    const double reach = std::max(quantile(n - 1), 0.5);
    const Axis x = Axis::around(-reach, reach);
    const Frame frame(svg, box, {name, "normal quantile", name, "normal with the same mean and deviation"}, x,
                      Axis::around(data.front(), data.back()));
    Points line;
    constexpr int steps = 100; // so that it can end where it leaves the picture
    for (int i = 0; i <= steps; ++i) {
        const double z = x.low + (x.high - x.low) * i / steps;
        line.emplace_back(z, mean + sd * z);
    }
    Points places;
    for (int i = 0; i < n; ++i)
        places.push_back(frame.at(quantile(i), data[static_cast<std::size_t>(i)]));
    svg.dots(places, 2.6, s_blue, 0.6);
    frame.curve(line);
}

} // namespace qmml::host::plot
