#include "host/smoothing.h"

#include "host/data_file.h"
#include "host/error.h"

#include <qmml/stattest.h>

#include <algorithm>
#include <cmath>

namespace qmml::host {

// Of the complete pairs, by x.
static std::vector<std::size_t> order_of(const std::vector<double>& x, const std::vector<double>& y)
{
    std::vector<std::size_t> order;
    for (std::size_t i = 0; i < x.size(); ++i)
        if (!std::isnan(x[i]) && !std::isnan(y[i]))
            order.push_back(i);
    std::ranges::stable_sort(order, {}, [&](std::size_t i) { return x[i]; });
    return order;
}

static std::vector<double> picked(const std::vector<double>& values, const std::vector<std::size_t>& order)
{
    std::vector<double> result;
    result.reserve(order.size());
    for (const std::size_t i : order)
        result.push_back(values[i]);
    return result;
}

std::vector<double> smoothed(const std::vector<double>& x, const std::vector<double>& y, const Smoothing& smoothing)
{
    const std::vector<std::size_t> order = order_of(x, y);
    if (order.empty())
        throw Error("no row has both values");
    if (order.size() > Smoothing::s_most_points)
        throw Error(std::to_string(order.size()) + " pairs; at most 4000 can be smoothed");
    const std::vector<double> sorted_x = picked(x, order), sorted_y = picked(y, order);
    std::vector<double> smooth(order.size()), weights(order.size()), residuals(order.size());
    int error = 0;
    if (clowess(sorted_x.data(), sorted_y.data(), static_cast<int>(order.size()), smoothing.span, smoothing.steps,
                smoothing.delta, smooth.data(), weights.data(), residuals.data(), &error) != 0)
        throw Error("out of memory");
    std::vector<double> result(x.size(), s_no_value);
    for (std::size_t i = 0; i < order.size(); ++i)
        result[order[i]] = smooth[i];
    return result;
}

plot::Points smooth_curve(const std::vector<double>& x, const std::vector<double>& smoothed)
{
    plot::Points points;
    for (const std::size_t i : order_of(x, smoothed))
        points.emplace_back(x[i], smoothed[i]);
    return points;
}

void choose_pairs(std::vector<double>& x, std::vector<double>& y)
{
    std::vector<std::size_t> order = order_of(x, y);
    if (const std::size_t n = order.size(); n > Smoothing::s_most_points) {
        std::vector<std::size_t> chosen;
        for (std::size_t i = 0; i < Smoothing::s_most_points; ++i)
            chosen.push_back(order[i * (n - 1) / (Smoothing::s_most_points - 1)]);
        order = chosen;
    }
    std::vector<double> chosen_x = picked(x, order), chosen_y = picked(y, order);
    x.swap(chosen_x);
    y.swap(chosen_y);
}

} // namespace qmml::host
