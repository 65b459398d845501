#include "stattest/fit_sample.h"

#include "stattest/missing_rule.h"

namespace qmml::stattest {

int read_sample(const Observations& observations, int at_least, const Support& support, Sample& sample) noexcept
{
    const MissingRule missing(observations.missing);
    std::int64_t count = 0;
    for (int i = 0; i < observations.n; ++i)
        count += !missing(observations.data[i]);
    if (count < at_least)
        return fit::s_too_few;
    if (!sample.values.allocate(count))
        return s_no_memory;
    std::size_t at = 0;
    for (int i = 0; i < observations.n; ++i) {
        const double value = observations.data[i];
        if (missing(value))
            continue;
        if (!is_finite(value) || value >= support.high ||
            (support.low_included ? value < support.low : value <= support.low))
            return fit::s_outside_support;
        sample.values[at++] = value;
    }
    const auto [least, greatest] = std::minmax_element(sample.values.begin(), sample.values.end());
    sample.least = *least;
    sample.greatest = *greatest;
    const bool varies = at_least > 1 ? sample.least < sample.greatest : sample.greatest > 0;
    return varies ? s_success : fit::s_no_variability;
}

} // namespace qmml::stattest
