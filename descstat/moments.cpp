#include "descstat/moments.h"

#include "core/missing.h"
#include "descstat/value_kernels.h"

#include <algorithm>
#include <cstring>

namespace qmml::descstat {
namespace {

// Hands the values that are not missing to use(block, count), all blocks but the last one being full. Returns how many
// there are.
template <class Use>
std::int64_t for_each_block(const double* values, std::int64_t count, Use use) noexcept
{
    constexpr std::int64_t chunk = std::int64_t{4} * s_block; // several blocks: what was just written is slow to read
    alignas(64) double present[s_block + chunk + s_overshoot];
    std::int64_t total = 0, filled = 0;
    for (std::int64_t i = 0; i < count; i += chunk) {
        filled += s_value_kernels->copy_present(present + filled, values + i, std::min(chunk, count - i));
        double* next = present;
        for (; filled >= s_block; filled -= s_block, next += s_block, total += s_block)
            use(next, s_block);
        std::memmove(present, next, static_cast<std::size_t>(filled) * sizeof(double));
    }
    if (filled > 0)
        use(present, static_cast<int>(filled));
    return total + filled;
}

// For the recurrences, which take the values one by one: step(value, how many so far).
template <class Step>
std::int64_t for_each_present(const double* values, std::int64_t count, Step step) noexcept
{
    std::int64_t present = 0;
    for (std::int64_t i = 0; i < count; ++i)
        if (!is_nan(values[i]))
            step(values[i], static_cast<double>(++present));
    return present;
}

Sum plain_sum(const double* values, std::int64_t count) noexcept
{
    Sum sum = {};
    sum.count = for_each_present(values, count, [&](double x, double) { sum.value += x; });
    return sum;
}

Mean plain_mean(const double* values, std::int64_t count) noexcept
{
    Mean mean = {};
    mean.count = for_each_present(values, count, [&](double x, double t) { mean.value += (x - mean.value) / t; });
    return mean;
}

Moments plain_moments(const double* values, std::int64_t count) noexcept
{
    Moments moments = {};
    moments.count = for_each_present(values, count, [&](double x, double t) {
        const double deviation = x - moments.mean;
        if (t > 1) // a single value's square may overflow
            moments.variance = (moments.variance + deviation * deviation / t) * (t - 1) / t;
        moments.mean += deviation / t;
    });
    if (moments.count > 1) {
        const auto t = static_cast<double>(moments.count);
        moments.variance *= t / (t - 1);
    }
    return moments;
}

Moments plain_normal_moments(const double* values, std::int64_t count) noexcept
{
    Moments moments = {};
    moments.count = for_each_present(values, count, [&](double x, double t) {
        const double deviation = x - moments.mean;
        moments.mean += deviation / t;
        moments.variance += (x - moments.mean) * deviation;
    });
    if (moments.count > 1)
        moments.variance /= static_cast<double>(moments.count - 1);
    return moments;
}

// T. F. Chan, G. H. Golub, R. J. LeVeque, Updating formulae and a pairwise algorithm for computing sample variances,
// COMPSTAT 1982.
class MergedBlocks {
public:
    void add(BlockMoments block, int count) noexcept
    {
        const double added = count, total = m_count + added, distance = block.mean - m_mean;
        if (m_count == 0) {
            m_mean = block.mean; // exactly, whatever the distance
            m_squares = block.squares;
        } else {
            m_mean += distance * (added / total);
            m_squares += block.squares + distance * distance * (m_count * added / total);
        }
        m_count = total;
    }
    double mean() const noexcept { return m_mean; }
    double variance() const noexcept { return m_squares / (m_count - 1); }

private:
    double m_count = 0, m_mean = 0, m_squares = 0;
};

template <Moments (*Plain)(const double*, std::int64_t) noexcept>
Moments moments_by(const double* values, std::int64_t count) noexcept
{
    if (count <= s_block)
        return Plain(values, count);
    MergedBlocks merged;
    const std::int64_t present = for_each_block(
        values, count, [&](double* block, int n) { merged.add(s_value_kernels->block_moments(block, n), n); });
    if (present <= s_block || !is_finite(merged.variance()) || !is_finite(merged.mean()))
        return Plain(values, count);
    return {present, merged.mean(), merged.variance()};
}

} // namespace

Sum sum_of(const double* values, std::int64_t count) noexcept
{
    if (count <= s_block)
        return plain_sum(values, count);
    Sum sum = {};
    sum.count =
        for_each_block(values, count, [&](double* block, int n) { sum.value += s_value_kernels->block_sum(block, n); });
    return sum.count <= s_block || !is_finite(sum.value) ? plain_sum(values, count) : sum;
}

Mean mean_of(const double* values, std::int64_t count) noexcept
{
    if (count <= s_block)
        return plain_mean(values, count);
    MergedBlocks merged;
    const std::int64_t present = for_each_block(values, count, [&](double* block, int n) {
        merged.add({s_value_kernels->block_mean(block, n), 0}, n);
    });
    if (present <= s_block || !is_finite(merged.mean()))
        return plain_mean(values, count);
    return {present, merged.mean()};
}

Moments moments_of(const double* values, std::int64_t count) noexcept
{
    return moments_by<plain_moments>(values, count);
}

Moments normal_moments_of(const double* values, std::int64_t count) noexcept
{
    return moments_by<plain_normal_moments>(values, count);
}

} // namespace qmml::descstat
