// Gamma and beta distributions. Both likelihoods depend on the sample through its means and the mean logarithms; of
// these only how far they lie below the logarithm of the mean is used, computed without cancellation, so that samples
// which hardly vary can be fitted too.
#include "stattest/digamma.h"
#include "stattest/fit_sample.h"

#include <limits>

namespace qmml::stattest {
namespace {

constexpr double s_infinity = std::numeric_limits<double>::infinity();
constexpr double s_resolution = 1e-11; // of logarithms of parameters

// u - ln(1 + u) for a value that lies (1 + u) times its mean; series: ln(1 + u) = 2 artanh(u / (2 + u)).
double log_deficit(double u, double value, double mean) noexcept
{
    if (std::abs(u) > 0.25)
        return u - (elementary::log(value) - elementary::log(mean));
    const double r = u / (2 + u), square = r * r;
    double series = 0;
    for (int k = 21; k >= 3; k -= 2)
        series = series * square + 1.0 / k;
    return u * r - 2 * r * square * series;
}

double exp_minus_one(double u) noexcept
{
    const double w = elementary::exp(u);
    if (w == 1)
        return u;
    return std::abs(u) > 1 ? w - 1 : (w - 1) * (u / elementary::log(w));
}

struct MeanOfDeviations {
    double mean, square;
};

MeanOfDeviations mean_of(const Sample& sample, const Deviations& deviations) noexcept
{
    double sum = 0, square = 0;
    for (const double v : sample.values)
        sum += deviations(v);
    const double mean = sum / sample.size();
    for (const double v : sample.values)
        square += (deviations(v) - mean) * (deviations(v) - mean);
    return {mean, square / sample.size()};
}

// k times ln k - psi(k): from 1 down to 1/2.
double scaled_deficit(double k) noexcept
{
    return k * log_minus_digamma(k);
}

// The beta distribution by its mean, as the shift of the logit from the sample's mean, and precision a + b.
struct BetaSample {
    double mean, rest; // of x, of 1 - x
    double deficit_x, deficit_rest;
};

struct BetaMean {
    double mean, rest, log_mean, log_rest; // logarithms: of the quotient by the sample's
};

BetaMean shifted(const BetaSample& s, double shift) noexcept
{
    const double t = s.mean * exp_minus_one(shift), log_t = log_one_plus(t);
    return {s.mean * elementary::exp(shift) / (1 + t), s.rest / (1 + t), shift - log_t, -log_t};
}

// The likeliest mean for a precision.
bool find_mean(const BetaSample& s, double precision, double& shift) noexcept
{
    const auto excess = [&](double d) {
        const BetaMean m = shifted(s, d);
        return log_minus_digamma(m.mean * precision) - log_minus_digamma(m.rest * precision) - s.deficit_x +
               s.deficit_rest - d;
    };
    const double resolution = 1e-13 * std::min(1.0, s.deficit_x + s.deficit_rest);
    return find_root(excess, shift, -1, resolution);
}

} // namespace

int fit_gamma(const Observations& observations, Fitted& fitted) noexcept
{
    Sample sample;
    if (const int error = read_sample(observations, 2, {0, s_infinity}, sample))
        return error;
    const Deviations deviations(sample);
    const double centre = mean_of(sample, deviations).mean, mean = deviations.value(centre);
    double deficit = 0;
    for (const double v : sample.values)
        deficit += log_deficit(deviations.length(deviations(v) - centre) / mean, v, mean);
    deficit /= sample.size();

    const auto excess = [=](double log_shape) {
        return elementary::log(log_minus_digamma(elementary::exp(log_shape)) / deficit);
    };
    double log_shape =
        elementary::log((3 - deficit + std::sqrt((deficit - 3) * (deficit - 3) + 24 * deficit)) / (12 * deficit));
    if (!find_root(excess, log_shape, -1, s_resolution))
        return fit::s_not_converged;
    const double shape = elementary::exp(log_shape);
    fitted = {{mean / shape, shape}};
    return in_range(fitted.parameters[0], fitted.parameters[1]);
}

int fit_beta(const Observations& observations, Fitted& fitted) noexcept
{
    Sample sample;
    if (const int error = read_sample(observations, 2, {0, 1}, sample))
        return error;
    const Deviations deviations(sample);
    const MeanOfDeviations m = mean_of(sample, deviations);
    BetaSample s{deviations.value(m.mean), 0, 0, 0};
    // Near 1 the distance to it must not come from the rounded mean.
    s.rest = (1 - sample.greatest) + deviations.length(deviations(sample.greatest) - m.mean);
    for (const double v : sample.values) {
        const double d = deviations.length(deviations(v) - m.mean);
        s.deficit_x += log_deficit(d / s.mean, v, s.mean);
        s.deficit_rest += log_deficit(-d / s.rest, 1 - v, s.rest);
    }
    s.deficit_x /= sample.size();
    s.deficit_rest /= sample.size();

    double shift = 0;
    bool found = true;
    const auto excess = [&](double log_precision) {
        const double precision = elementary::exp(log_precision);
        found = found && find_mean(s, precision, shift);
        const BetaMean mean = shifted(s, shift);
        const double gained =
            scaled_deficit(mean.mean * precision) + scaled_deficit(mean.rest * precision) - scaled_deficit(precision);
        const double needed = mean.mean * (mean.log_mean + s.deficit_x) + mean.rest * (mean.log_rest + s.deficit_rest);
        return elementary::log(gained / needed) - log_precision;
    };
    const double variance = deviations.length(std::sqrt(m.square));
    double log_precision = elementary::log(std::max(s.mean / variance * (s.rest / variance) - 1, 1e-3)); // by moments
    if (!find_root(excess, log_precision, -1, s_resolution) || !found)
        return fit::s_not_converged;
    static_cast<void>(excess(log_precision)); // the mean at the last step
    const BetaMean mean = shifted(s, shift);
    const double precision = elementary::exp(log_precision);
    fitted = {{mean.mean * precision, mean.rest * precision}};
    return in_range(fitted.parameters[0], fitted.parameters[1]);
}

} // namespace qmml::stattest
