#include "core/block.h"
#include "core/missing.h"
#include "core/sort.h"
#include "core/under_guard.h"
#include "descstat/moments.h"
#include "descstat/order_statistics.h"
#include "descstat/percentile_method.h"
#include "descstat/result.h"
#include "descstat/value_kernels.h"

#include <qmml/descstat.h>

#include <algorithm>
#include <climits>
#include <cmath>

namespace qmml::descstat {
namespace {

struct Range {
    const double* values;
    std::int64_t count;
};

// Positions count from 1; a count of 0 or -1 reaches to the last position there can be.
Range range_of(const double* values, int start, int count) noexcept
{
    if (!values || count < -1)
        return {values, 0};
    const std::int64_t first = std::max(start, 1), to_end = std::int64_t{INT_MAX} - first + 1;
    return {values + (first - 1), count < 1 ? to_end : std::min<std::int64_t>(count, to_end)};
}

// Runs statistic(values, count, result), which returns how many values it has used.
template <class Statistic>
int over_range(const double* values, int start, int count, double* result, Statistic statistic) noexcept
{
    std::int64_t used = 0;
    under_guard([&] {
        const Range range = range_of(values, start, count);
        used = statistic(range.values, range.count, result);
        if (used == 0)
            *result = s_missing;
    });
    return static_cast<int>(used);
}

double first_zero(const double* values, std::int64_t count) noexcept
{
    const double* const zero = std::find_if(values, values + count, [](double v) { return bits_of(v) << 1 == 0; });
    return zero == values + count ? 0.0 : *zero;
}

// The kernel tells the zeros apart. The rule does not: the first one stands.
std::int64_t extreme(std::int64_t (*kernel)(const double*, std::int64_t, double*) noexcept, const double* values,
                     std::int64_t count, double* result) noexcept
{
    const std::int64_t used = kernel(values, count, result);
    if (used > 0 && *result == 0)
        *result = first_zero(values, count);
    return used;
}

std::int64_t percentiles_or_fail(const double* values, std::int64_t count, PercentileRequest request,
                                 double* results) noexcept
{
    request.method = percentile_method();
    std::int64_t used = 0;
    const Selection selection = percentiles(values, count, request, results, &used);
    return selection == Selection::done ? used : fail(selection);
}

std::int64_t mode(const double* values, std::int64_t count, double* result) noexcept
{
    Block<double> work(count + s_overshoot);
    if (!work)
        return fail(s_no_memory);
    const std::int64_t used = s_value_kernels->copy_present(work.data(), values, count);
    sort_ascending(work.data(), used);
    std::int64_t longest = 0;
    for (std::int64_t first = 0, last = 0; first < used; first = last) {
        while (last < used && work.data()[last] == work.data()[first])
            ++last;
        if (last - first > longest) {
            longest = last - first;
            *result = work.data()[first];
        }
    }
    return used;
}

constexpr double s_quartiles[] = {25, 50, 75};
constexpr bool s_single_counts_as_is = true;

} // namespace
} // namespace qmml::descstat

using namespace qmml::descstat;

int ValCount(const double* values, int start, int count)
{
    const Range range = range_of(values, start, count);
    return static_cast<int>(s_value_kernels->count_present(range.values, range.count));
}

int ValSum(const double* values, int start, int count, double* result)
{
    return over_range(values, start, count, result, [](const double* v, std::int64_t n, double* out) {
        const Sum sum = sum_of(v, n);
        *out = sum.value;
        return sum.count;
    });
}

int ValMean(const double* values, int start, int count, double* result)
{
    return over_range(values, start, count, result, [](const double* v, std::int64_t n, double* out) {
        const Mean mean = mean_of(v, n);
        *out = mean.value;
        return mean.count;
    });
}

int ValVariance(const double* values, int start, int count, double* result)
{
    return over_range(values, start, count, result, [](const double* v, std::int64_t n, double* out) {
        const Moments moments = moments_of(v, n);
        *out = moments.variance;
        return moments.count;
    });
}

int ValStDeviation(const double* values, int start, int count, double* result)
{
    return over_range(values, start, count, result, [](const double* v, std::int64_t n, double* out) {
        const Moments moments = moments_of(v, n);
        *out = moments.variance <= 0 ? 0.0 : std::sqrt(moments.variance);
        return moments.count;
    });
}

int ValStError(const double* values, int start, int count, double* result)
{
    return over_range(values, start, count, result, [](const double* v, std::int64_t n, double* out) {
        const Moments moments = moments_of(v, n);
        *out = std::sqrt(moments.variance / static_cast<double>(moments.count));
        return moments.count;
    });
}

int ValMin(const double* values, int start, int count, double* result)
{
    return over_range(values, start, count, result, [](const double* v, std::int64_t n, double* out) {
        return extreme(s_value_kernels->minimum, v, n, out);
    });
}

int ValMax(const double* values, int start, int count, double* result)
{
    return over_range(values, start, count, result, [](const double* v, std::int64_t n, double* out) {
        return extreme(s_value_kernels->maximum, v, n, out);
    });
}

int ValMedian(const double* values, int start, int count, double* result)
{
    return over_range(values, start, count, result, [](const double* v, std::int64_t n, double* out) {
        return percentiles_or_fail(v, n, {s_quartiles + 1, 1, s_single_counts_as_is}, out);
    });
}

int ValQuartiles(const double* values, int start, int count, double* result)
{
    const int used = over_range(values, start, count, result, [](const double* v, std::int64_t n, double* out) {
        return percentiles_or_fail(v, n, {s_quartiles, 3, s_single_counts_as_is}, out);
    });
    if (used == 0)
        result[1] = result[2] = result[0];
    return used;
}

int ValPercentile(const double* values, int start, int count, double p, double* result)
{
    return over_range(values, start, count, result, [p](const double* v, std::int64_t n, double* out) {
        return percentiles_or_fail(v, n, {&p, 1}, out);
    });
}

int ValMode(const double* values, int start, int count, double* result)
{
    return over_range(values, start, count, result, mode);
}
