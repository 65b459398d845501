#include "core/under_guard.h"
#include "descstat/order_statistics.h"
#include "descstat/percentile_method.h"
#include "descstat/quantile_rule.h"

#include <qmml/descstat.h>

#include <atomic>

namespace qmml::descstat {
namespace {

constinit std::atomic<short> s_method = 0;

Selection percentile_of_sorted(const double* values, int n, int method, double percent, double* result) noexcept
{
    if (n < 1 || !is_percentile(method, percent))
        return Selection::bad_argument;
    const QuantileRule rule = quantile_rule(n, method, percent);
    *result = rule.value(values[rule.lower - 1], values[rule.upper - 1]);
    return Selection::done;
}

} // namespace

short percentile_method() noexcept
{
    constexpr short empirical_distribution = 3;
    short method = 0;
    return s_method.compare_exchange_strong(method, empirical_distribution, std::memory_order_relaxed)
               ? empirical_distribution
               : method;
}

} // namespace qmml::descstat

short ComputePercentilesEx(const double* values, int n, double* result, short method, double p, short* status,
                           int sortFirst)
{
    using namespace qmml::descstat;
    qmml::under_guard([&] {
        const Selection selection = sortFirst ? percentile_of_all(values, n, method, p, result)
                                              : percentile_of_sorted(values, n, method, p, result);
        *status = selection == Selection::done ? 0 : selection == Selection::no_memory ? 2 : 1;
    });
    return *status != 0;
}

short Func_SetPercentileMethod(short method)
{
    qmml::descstat::s_method.store(method, std::memory_order_relaxed);
    return method;
}
