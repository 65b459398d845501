#include "host/plot/axis.h"

#include <algorithm>
#include <cmath>
#include <cstdio>

namespace qmml::host::plot {

static constexpr double s_least_relative_width = 1e-11; // narrower ranges have no ticks that 15 digits can tell apart

bool can_be_drawn(double value)
{
    return std::fabs(value) < 1e300;
}

Axis Axis::around(double low, double high, double margin)
{
    const double size = std::max(std::fabs(low), std::fabs(high));
    const double width = high - low;
    if (width <= s_least_relative_width * size || width < 1e-290) {
        const double half = size < 1e-290 ? 0.5 : std::max(0.1 * size, s_least_relative_width);
        return {.low = low - half, .high = high + half};
    }
    return {.low = low - margin * width, .high = high + margin * width};
}

static double round_step(double least)
{
    const double power = std::pow(10, std::floor(std::log10(least)));
    for (const double factor : {1.0, 2.0, 5.0})
        if (factor * power >= least * (1 - 1e-9))
            return factor * power;
    return 10 * power;
}

static std::string tick_label(double value, double step, double largest)
{
    char text[64];
    const int decade = static_cast<int>(std::floor(std::log10(step) + 1e-9));
    if (largest >= 1e6 || largest < 1e-4) {
        const int digits = static_cast<int>(std::floor(std::log10(largest) + 1e-9)) - decade;
        std::snprintf(text, sizeof text, "%.*e", std::clamp(digits, 0, 16), value);
        std::string label = text;
        const std::size_t e = label.find('e');
        std::string mantissa = label.substr(0, e);
        if (mantissa.find('.') != mantissa.npos)
            mantissa.erase(mantissa.find_last_not_of('0') + 1);
        if (mantissa.ends_with('.'))
            mantissa.pop_back();
        return value == 0 ? "0" : mantissa + 'e' + std::to_string(std::atoi(label.c_str() + e + 1));
    }
    std::snprintf(text, sizeof text, "%.*f", std::clamp(-decade, 0, 16), value);
    return text;
}

std::vector<Tick> Axis::ticks(int most) const
{
    const double step = round_step(std::max((high - low) / std::max(most, 1), finest));
    const double largest = std::max(std::fabs(low), std::fabs(high));
    std::vector<Tick> result;
    const double first = std::ceil(low / step - 1e-9);
    for (int i = 0; i <= most; ++i) {
        const double value = (first + i) * step;
        if (value > high + 1e-9 * step)
            break;
        const double shown = std::fabs(value) < step / 2 ? 0 : value; // never "-0"
        result.push_back({shown, tick_label(shown, step, largest)});
    }
    return result;
}

} // namespace qmml::host::plot
