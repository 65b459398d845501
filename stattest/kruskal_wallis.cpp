#include "stattest/kruskal_wallis.h"

#include <qmml/distrib.h>

#include "core/sort.h"

#include <algorithm>
#include <cstdint>
#include <utility>

namespace qmml::stattest {
namespace {

// In place, for when there is no memory: a heap sort. A NaN is less than nothing and ends up anywhere.
void heap_sort(double* values, int* group, std::int64_t n) noexcept
{
    const auto exchange = [=](std::int64_t i, std::int64_t j) {
        std::swap(values[i], values[j]);
        std::swap(group[i], group[j]);
    };
    const auto sift = [=](std::int64_t parent, std::int64_t end) {
        for (std::int64_t child = 0; (child = 2 * parent + 1) < end; parent = child) {
            if (child + 1 < end && values[child] < values[child + 1])
                ++child;
            if (!(values[parent] < values[child]))
                return;
            exchange(parent, child);
        }
    };
    for (std::int64_t i = n / 2; i-- > 0;)
        sift(i, n);
    for (std::int64_t end = n; end-- > 1;) {
        exchange(0, end);
        sift(0, end);
    }
}

// Returns the sum of t^3 - t over the runs of t equal values.
double rank(const int* group, double* values, std::int64_t n, int groups, double* counts, double* rank_sums) noexcept
{
    double ties = 0;
    for (std::int64_t first = 0, end = 0; first < n; first = end) {
        const double value = values[first];
        for (end = first + 1; end < n && values[end] == value; ++end)
            ;
        const double mid_rank = static_cast<double>(first + 1 + end) / 2;
        const auto length = static_cast<double>(end - first);
        ties += length * length * length - length;
        for (std::int64_t i = first; i < end; ++i) {
            values[i] = mid_rank;
            if (group[i] >= 0 && group[i] < groups) {
                counts[group[i]] += 1;
                rank_sums[group[i]] += mid_rank;
            }
        }
    }
    return ties;
}

double statistic(double n, int groups, const double* counts, const double* rank_sums, double ties) noexcept
{
    double sum = 0;
    for (int g = 0; g < groups; ++g) {
        if (!(counts[g] > 0))
            return 0;
        sum += rank_sums[g] * rank_sums[g] / counts[g];
    }
    const double tied = ties / (n * n * n - n);
    return tied < 1 ? (sum * 12 / (n * (n + 1)) - 3 * (n + 1)) / (1 - tied) : 0;
}

} // namespace

void kruskal_wallis_test(int* group, double* values, int n, int groups, double* counts, double* rank_sums,
                         KruskalWallis& result) noexcept
{
    if (!sort_with_companions(values, group, n, Direction::ascending))
        heap_sort(values, group, n);
    std::fill_n(counts, std::max(groups, 0), 0.0);
    std::fill_n(rank_sums, std::max(groups, 0), 0.0);
    const double ties = rank(group, values, n, groups, counts, rank_sums);
    result.h = statistic(n, groups, counts, rank_sums, ties);
    result.df = static_cast<double>(groups) - 1;
    if (result.df != 0) {
        const double lower = i_chi2(result.h, result.df);
        result.p = lower < 0 ? 1 : 1 - lower; // negative: no degrees of freedom
    }
}

} // namespace qmml::stattest
