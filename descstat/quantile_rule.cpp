#include "descstat/quantile_rule.h"

#include "core/compare.h"

#include <algorithm>
#include <cmath>

namespace qmml::descstat {
namespace {

struct Position {
    std::int64_t whole;
    double fraction;
};

Position split(double position) noexcept
{
    const double whole = std::floor(position), fraction = position - whole;
    if (is_greater_equal(fraction, 1.0))
        return {static_cast<std::int64_t>(whole) + 1, 0};
    return {static_cast<std::int64_t>(whole), fraction};
}

} // namespace

double QuantileRule::value(double at_lower, double at_upper) const noexcept
{
    switch (form) {
    case QuantileForm::weighted: return (1 - fraction) * at_lower + fraction * at_upper;
    case QuantileForm::halfway: return (at_upper + at_lower) / 2;
    case QuantileForm::step: break;
    }
    return lower == upper ? at_lower : at_lower + (at_upper - at_lower) * fraction;
}

bool is_percentile(int method, double percent) noexcept
{
    return method >= 1 && method <= 6 && !is_nan(percent) && percent >= 0.01 && percent <= 99.99;
}

QuantileRule quantile_rule(std::int64_t count, int method, double percent) noexcept
{
    const double q = percent * 0.01, n = static_cast<double>(count);
    const auto observation = [count](std::int64_t k) {
        const std::int64_t place = std::clamp<std::int64_t>(k, 1, count);
        return QuantileRule{place, place, QuantileForm::step, 0};
    };
    const auto between = [count](std::int64_t k, QuantileForm form, double fraction) {
        return QuantileRule{std::clamp<std::int64_t>(k, 1, count), std::clamp<std::int64_t>(k + 1, 1, count), form,
                            fraction};
    };
    switch (method) {
    case 1: {
        const auto [k, f] = split(n * q);
        return between(k, QuantileForm::weighted, f);
    }
    case 2: return observation(split(n * q + 0.5).whole);
    case 3: {
        const auto [k, f] = split(n * q);
        return observation(is_less_equal(f, 0.0) ? k : k + 1);
    }
    case 4: {
        const auto [k, f] = split((n + 1) * q);
        return between(k, QuantileForm::weighted, f);
    }
    case 5: {
        const auto [k, f] = split(n * q);
        return is_less_equal(f, 0.0) ? between(k, QuantileForm::halfway, f) : observation(k + 1);
    }
    default: {
        const auto [k, f] = split((n - 1) * q);
        return is_equal(f, 0.0) ? observation(k + 1) : between(k + 1, QuantileForm::step, f);
    }
    }
}

} // namespace qmml::descstat
