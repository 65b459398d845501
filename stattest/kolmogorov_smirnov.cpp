#include "stattest/kolmogorov_smirnov.h"

#include <qmml/distrib.h>

#include "core/block.h"
#include "core/sort.h"
#include "distrib/arguments.h"
#include "stattest/error.h"
#include "stattest/kernels.h"
#include "stattest/missing_rule.h"

#include <cstdint>
#include <iterator>

namespace qmml::stattest {
namespace {

using LowerTail = double (*)(double x, const double (&p)[3]);

constexpr int s_normal = 1;
constexpr LowerTail s_families[] = {
    [](double x, const double (&p)[3]) { return i_normal(x, p[0], p[1]); },
    [](double x, const double (&p)[3]) { return i_laplace(x, p[0], p[1]); },
    [](double x, const double (&p)[3]) { return i_logis(x, p[0], p[1]); },
    [](double x, const double (&p)[3]) { return i_poisson(x, p[0]); },
    [](double x, const double (&p)[3]) { return i_geom(x, p[0]); },
    [](double x, const double (&p)[3]) { return i_expon(x, p[0]); },
    [](double x, const double (&p)[3]) { return i_beta(x, p[0], p[1]); },
    [](double x, const double (&p)[3]) { return i_gamma(p[0] == 0 ? x : x / p[0], p[1]); },
    [](double x, const double (&p)[3]) { return i_lognorm(x, p[0], p[1]); },
    [](double x, const double (&p)[3]) { return i_weibull(x, p[0], p[1], p[2]); },
    [](double x, const double (&p)[3]) { return i_extreme(x, p[0], p[1]); },
    [](double x, const double (&p)[3]) { return i_rayleigh(x, p[0]); },
};

// The counted values, in ascending order, and room up to a multiple of eight.
struct Sample {
    Block<double> values;
    int count = 0;
    bool calm = true; // nothing that a distribution function would have to look at twice
};

bool read(const double* data, int n, const MissingRule& missing, Sample& sample) noexcept
{
    if (!sample.values.allocate((std::int64_t{sample.count} + 7) / 8 * 8))
        return false;
    std::size_t count = 0;
    for (int i = 0; i < n; ++i)
        if (!missing(data[i])) {
            sample.values[count++] = data[i];
            sample.calm = sample.calm && moderate(data[i]);
        }
    sort_ascending(sample.values.data(), sample.count);
    return true;
}

double largest_distance(Sample& sample, int family, const double (&p)[3]) noexcept
{
    double* const x = sample.values.data();
    const int n = sample.count;
    if (family == s_normal && sample.calm && calm_point(0, p[0], p[1])) {
        static_cast<void>(i_normal(x[0], p[0], p[1])); // leaves the last error as the calls would
        s_test_kernels->normal_lower(x, static_cast<int>(sample.values.size()), p[0], p[1]);
        return s_test_kernels->largest_distance(x, n);
    }
    for (int i = 0; i < n; ++i)
        x[i] = s_families[family - 1](x[i], p);
    return s_test_kernels->largest_distance(x, n);
}

} // namespace

bool kolmogorov_smirnov_test(const double* data, int n, double missing, int family, const double (&parameters)[3],
                             KolmogorovSmirnov& result, int& error) noexcept
{
    using namespace kolmogorov_smirnov;
    error = s_all_equal;
    const MissingRule is_missing(missing);
    Sample sample;
    bool differ = false;
    double first = 0;
    for (int i = 0; i < n; ++i) {
        if (is_missing(data[i]))
            continue;
        if (sample.count++ == 0)
            first = data[i];
        differ = differ || !is_equal(data[i], first);
    }
    if (!differ)
        return false;
    error = s_too_few;
    if (sample.count < 3)
        return false;
    error = s_no_memory;
    if (!read(data, n, is_missing, sample))
        return false;
    error = s_no_such_family;
    if (family < 1 || family > static_cast<int>(std::size(s_families)))
        return false;
    result.distance = largest_distance(sample, family, parameters);
    result.p = tabulated_probability(result.distance, sample.count, 0);
    if (family == s_normal)
        result.p_lilliefors = tabulated_probability(result.distance, sample.count, 1);
    return true;
}

} // namespace qmml::stattest
