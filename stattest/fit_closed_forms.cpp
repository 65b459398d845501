#include "stattest/fit_sample.h"

#include <limits>

namespace qmml::stattest {
namespace {

constexpr double s_infinity = std::numeric_limits<double>::infinity();

struct Moments {
    double mean, deviation;
};

// Of values between 0 and about 2, in two passes.
Moments moments(const Block<double>& values) noexcept
{
    const auto n = static_cast<double>(values.size());
    double sum = 0;
    for (const double v : values)
        sum += v;
    const double mean = sum / n;
    double rest = 0, squares = 0;
    for (const double v : values) {
        rest += v - mean;
        squares += (v - mean) * (v - mean);
    }
    return {mean + rest / n, std::sqrt((squares - rest * rest / n) / n)};
}

} // namespace

int fit_normal(const Observations& observations, Fitted& fitted) noexcept
{
    Sample sample;
    if (const int error = read_sample(observations, 2, {-s_infinity, s_infinity}, sample))
        return error;
    const Deviations deviations(sample);
    for (double& v : sample.values)
        v = deviations(v);
    const Moments m = moments(sample.values);
    fitted = {{deviations.value(m.mean), deviations.length(m.deviation)}};
    return in_range(fitted.parameters[0], fitted.parameters[1]);
}

int fit_lognormal(const Observations& observations, Fitted& fitted) noexcept
{
    Sample sample;
    if (const int error = read_sample(observations, 2, {0, s_infinity}, sample))
        return error;
    // Logarithms of ratios: those of nearly equal values would lose their differences. At most 1455.
    for (double& v : sample.values)
        v = log_ratio(v, sample.least);
    const Moments m = moments(sample.values);
    fitted = {{elementary::log(sample.least) + m.mean, m.deviation}};
    return in_range(fitted.parameters[0], fitted.parameters[1]);
}

int fit_exponential(const Observations& observations, Fitted& fitted) noexcept
{
    Sample sample;
    if (const int error = read_sample(observations, 1, {0, s_infinity, true}, sample))
        return error;
    const int exponent = std::ilogb(sample.greatest);
    double sum = 0;
    for (const double v : sample.values)
        sum += std::scalbn(v, -exponent);
    fitted = {{std::scalbn(sample.size() / sum, -exponent), 0}};
    return in_range(fitted.parameters[0]);
}

int fit_rayleigh(const Observations& observations, Fitted& fitted) noexcept
{
    Sample sample;
    if (const int error = read_sample(observations, 1, {0, s_infinity, true}, sample))
        return error;
    const int exponent = std::ilogb(sample.greatest);
    double squares = 0;
    for (const double v : sample.values) {
        const double scaled = std::scalbn(v, -exponent);
        squares += scaled * scaled;
    }
    fitted = {{std::scalbn(std::sqrt(squares / (2 * sample.size())), exponent), 0}};
    return in_range(fitted.parameters[0]);
}

} // namespace qmml::stattest
