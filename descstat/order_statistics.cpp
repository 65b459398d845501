#include "descstat/order_statistics.h"

#include "core/block.h"
#include "core/missing.h"
#include "core/sort.h"
#include "descstat/quantile_rule.h"
#include "descstat/value_kernels.h"

#include <algorithm>
#include <cmath>
#include <cstring>

namespace qmml::descstat {
namespace {

constexpr std::int64_t s_on_stack = 2048;

// Puts the order statistics in their places in the work array and writes the results.
void select_in_place(double* work, std::int64_t present, const PercentileRequest& request, double* results) noexcept
{
    QuantileRule rules[s_most_percents];
    std::int64_t ranks[2 * s_most_percents], *rank = ranks;
    for (int i = 0; i < request.count; ++i) {
        rules[i] = quantile_rule(present, request.method, request.percents[i]);
        *rank++ = rules[i].lower - 1;
        *rank++ = rules[i].upper - 1;
    }
    select_ranks(work, present, ranks, static_cast<int>(rank - ranks));
    for (int i = 0; i < request.count; ++i)
        results[i] = rules[i].value(work[rules[i].lower - 1], work[rules[i].upper - 1]);
}

// Of a long column only the values near each percentile are copied: a sorted sample tells where it lies, one pass
// counts what is below and collects what is inside. The guess may miss: then the whole column is copied.
class SampledColumn {
public:
    SampledColumn(const double* values, std::int64_t count) noexcept
        : m_values(values), m_count(count), m_sampled(std::clamp<std::int64_t>(count / 64, 512, 65536))
    {
    }

    // False when it does not come off.
    bool select(const PercentileRequest& request, double* results, std::int64_t* present) noexcept
    {
        if (!draw_sample())
            return false;
        for (int i = 0; i < request.count; ++i)
            set_interval(m_parts[i], request.percents[i] * 0.01);
        for (int i = 0; i < request.count; ++i)
            if (!m_parts[i].inside.allocate(m_parts[i].capacity))
                return false;
        *present = 0;
        for (std::int64_t i = 0; i < m_count; i += s_chunk) {
            const std::int64_t next = std::min(s_chunk, m_count - i);
            *present += s_value_kernels->count_present(m_values + i, next);
            for (int part = 0; part < request.count; ++part)
                if (!collect(m_parts[part], m_values + i, next))
                    return false;
        }
        for (int i = 0; i < request.count; ++i)
            if (!take(m_parts[i], quantile_rule(*present, request.method, request.percents[i]), results[i]))
                return false;
        return true;
    }

private:
    static constexpr std::int64_t s_chunk = 2048; // stays in the first-level cache

    struct Part {
        Interval interval;
        std::int64_t capacity, below, collected;
        Block<double> inside;

        bool is_one_value() const noexcept { return bits_of(interval.low) == bits_of(interval.high); }
    };

    bool draw_sample() noexcept
    {
        if (!m_sample.allocate(m_sampled + s_overshoot))
            return false;
        std::int64_t valid = 0;
        for (std::int64_t i = 0; i < m_sampled; ++i) {
            const double value = m_values[(2 * i + 1) * m_count / (2 * m_sampled)];
            m_sample.data()[valid] = value;
            valid += is_nan(value) ? 0 : 1;
        }
        m_sampled = valid;
        sort_ascending(m_sample.data(), m_sampled);
        return m_sampled >= 256; // else hardly anything is there
    }

    // Four standard deviations of a sample's rank to both sides.
    void set_interval(Part& part, double q) noexcept
    {
        const auto m = static_cast<double>(m_sampled);
        const double center = m * q, margin = 4 * std::sqrt(m * q * (1 - q)) + 2;
        const auto low = static_cast<std::int64_t>(center - margin),
                   high = static_cast<std::int64_t>(center + margin) + 1;
        constexpr double infinity = std::bit_cast<double>(std::uint64_t{0x7FF0000000000000});
        part.interval = {low > 0 ? m_sample.data()[low] : -infinity,
                         high < m_sampled ? m_sample.data()[high] : infinity};
        part.below = part.collected = 0;
        part.capacity =
            static_cast<std::int64_t>(static_cast<double>(m_count) * (2.5 * margin + 16) / m) + s_chunk + s_overshoot;
    }

    static bool collect(Part& part, const double* values, std::int64_t count) noexcept
    {
        const std::int64_t place = part.is_one_value() ? 0 : part.collected; // then their number is enough
        if (place + count + s_overshoot > part.capacity)
            return false;
        part.collected += s_value_kernels->split(part.inside.data() + place, values, count, part.interval, &part.below);
        return true;
    }

    static bool take(Part& part, const QuantileRule& rule, double& result) noexcept
    {
        const std::int64_t ranks[] = {rule.lower - 1 - part.below, rule.upper - 1 - part.below};
        if (ranks[0] < 0 || ranks[1] >= part.collected)
            return false;
        if (part.is_one_value()) {
            result = rule.value(part.interval.low, part.interval.low);
            return true;
        }
        select_ranks(part.inside.data(), part.collected, ranks, 2);
        result = rule.value(part.inside.data()[ranks[0]], part.inside.data()[ranks[1]]);
        return true;
    }

    const double* const m_values;
    const std::int64_t m_count;
    std::int64_t m_sampled;
    Block<double> m_sample;
    Part m_parts[s_most_percents] = {};
};

Selection select_in_copy(double* work, const double* values, std::int64_t count, const PercentileRequest& request,
                         double* results, std::int64_t* present) noexcept
{
    *present = s_value_kernels->copy_present(work, values, count);
    if (*present == 0)
        return Selection::done;
    if (*present == 1 && request.single_counts_as_is)
        std::fill_n(results, request.count, work[0]);
    else if (request.is_valid())
        select_in_place(work, *present, request, results);
    else
        return Selection::bad_argument;
    return Selection::done;
}

} // namespace

bool PercentileRequest::is_valid() const noexcept
{
    return std::all_of(percents, percents + count, [this](double p) { return is_percentile(method, p); });
}

Selection percentiles(const double* values, std::int64_t count, const PercentileRequest& request, double* results,
                      std::int64_t* present) noexcept
{
    constexpr std::int64_t s_worth_sampling = 16384;
    if (count <= s_on_stack) {
        double work[s_on_stack + s_overshoot];
        return select_in_copy(work, values, count, request, results, present);
    }
    if (count >= s_worth_sampling && request.is_valid() &&
        SampledColumn(values, count).select(request, results, present))
        return Selection::done;
    Block<double> work(count + s_overshoot);
    return work ? select_in_copy(work.data(), values, count, request, results, present) : Selection::no_memory;
}

Selection percentile_of_all(const double* values, std::int64_t count, int method, double percent,
                            double* result) noexcept
{
    const PercentileRequest request = {&percent, 1, false, method};
    if (count < 1 || !request.is_valid())
        return Selection::bad_argument;
    std::int64_t present = 0;
    if (s_value_kernels->count_present(values, count) == count)
        return percentiles(values, count, request, result, &present);
    Block<double> work(count);
    if (!work)
        return Selection::no_memory;
    std::memcpy(work.data(), values, static_cast<std::size_t>(count) * sizeof(double));
    select_in_place(work.data(), count, request, result);
    return Selection::done;
}

} // namespace qmml::descstat
