// The extreme value distribution, and the Weibull distribution as that of minus the logarithm.
#include "core/missing.h"
#include "stattest/fit_sample.h"

#include <limits>

namespace qmml::stattest {
namespace {

constexpr double s_infinity = std::numeric_limits<double>::infinity();

struct Extreme {
    double rate;     // 1 / scale
    double location; // from the least value
};

// v holds deviations from the least value. The rate L solves 1 / L = mean(v) - (weighted mean of v), the weights being
// exp(-L v): in logarithms both sides are nearly straight.
bool fit_deviations(const Block<double>& v, Extreme& fitted) noexcept
{
    const auto n = static_cast<double>(v.size());
    double mean = 0;
    for (const double value : v)
        mean += value / n;
    double square = 0;
    for (const double value : v)
        square += (value - mean) * (value - mean) / n;

    double weights = 0;
    const auto excess = [&](double log_rate) {
        const double rate = elementary::exp(log_rate);
        double below = 0;
        weights = 0;
        for (const double value : v) {
            const double weight = elementary::exp(-rate * value);
            weights += weight;
            below += weight * (mean - value);
        }
        return -log_rate - elementary::log(below / weights);
    };
    double log_rate = elementary::log(1.2825498301618641 / std::sqrt(square)); // pi / sqrt(6): by moments
    if (!find_root(excess, log_rate, -1.5, 1e-11))
        return false;
    static_cast<void>(excess(log_rate));
    fitted.rate = elementary::exp(log_rate);
    fitted.location = -elementary::log(weights / n) / fitted.rate;
    return true;
}

} // namespace

int fit_extreme(const Observations& observations, Fitted& fitted) noexcept
{
    Sample sample;
    if (const int error = read_sample(observations, 2, {-s_infinity, s_infinity}, sample))
        return error;
    const Deviations deviations(sample);
    for (double& v : sample.values)
        v = deviations(v);
    Extreme extreme{};
    if (!fit_deviations(sample.values, extreme))
        return fit::s_not_converged;
    fitted = {{deviations.value(extreme.location), deviations.length(1 / extreme.rate)}};
    return in_range(fitted.parameters[0], fitted.parameters[1]);
}

int fit_weibull(const Observations& observations, double location, Fitted& fitted) noexcept
{
    Sample sample;
    // A location that is no number has nothing above it.
    const double low = is_finite(location) ? location : s_infinity;
    if (const int error = read_sample(observations, 2, {low, s_infinity}, sample))
        return error;
    // In quarters where the distance is out of range; it may also round values together.
    const double shrink = std::isfinite(sample.greatest - location) ? 1 : 0.25;
    const double greatest = sample.greatest * shrink - location * shrink;
    for (double& v : sample.values)
        v = log_ratio(greatest, v * shrink - location * shrink);
    if (*std::max_element(sample.values.begin(), sample.values.end()) <= 0)
        return fit::s_no_variability;
    Extreme extreme{};
    if (!fit_deviations(sample.values, extreme))
        return fit::s_not_converged;
    fitted = {{greatest * elementary::exp(-extreme.location) / shrink, extreme.rate}};
    return in_range(fitted.parameters[0], fitted.parameters[1]);
}

} // namespace qmml::stattest
