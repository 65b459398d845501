#include "descstat_bench.h"

#include <qmml/descstat.h>

#include <algorithm>
#include <limits>
#include <numeric>

namespace qmml::bench {

std::vector<std::vector<double>> make_columns(int values, int columns, bool with_missing)
{
    std::mt19937_64 generator(20);
    std::normal_distribution<double> normal;
    std::vector<std::vector<double>> made(static_cast<std::size_t>(columns),
                                          std::vector<double>(static_cast<std::size_t>(values)));
    for (auto& column : made)
        for (double& v : column) {
            v = normal(generator);
            if (with_missing && generator() % 100 == 0)
                v = std::numeric_limits<double>::quiet_NaN();
        }
    return made;
}

void add_statistic(const std::string& name, const std::string& implementation, const Statistic& statistic)
{
    static std::map<std::string, Statistic> s_references;
    for (const Length& length : s_lengths) {
        const std::string workload = name + "_" + length.name;
        const Statistic reference = s_references.try_emplace(workload, statistic).first->second;
        const auto run = [=](benchmark::State& state) {
            const auto columns = make_columns(length.values, length.statistic_columns, true);
            auto candidate = statistic;
            for (const auto& column : columns) {
                const double expected = reference(column);
                // Sums of 1e7 values in different orders.
                if (!(std::abs(candidate(column) - expected) <= 1e-11 * std::max(1.0, std::abs(expected))))
                    return state.SkipWithError("wrong value: not timed");
            }
            std::size_t next = 0;
            for (auto _ : state) {
                benchmark::DoNotOptimize(candidate(columns[next]));
                next = next + 1 == columns.size() ? 0 : next + 1;
            }
        };
        benchmark::RegisterBenchmark((workload + "/" + implementation).c_str(), run);
    }
}

namespace {

// Runs over fresh columns: outside the clock they are made anew.
void run_fresh(benchmark::State& state, const Length& length, const PairSort& sort, const PairSort& reference)
{
    const auto fresh = make_columns(length.values, length.sort_columns, false);
    auto keys = fresh;
    std::vector<double> positions(fresh[0].size());
    std::iota(positions.begin(), positions.end(), 0.0);
    {
        auto own = fresh[0], expected = own, companions = positions, expected_companions = positions;
        sort(own, companions);
        reference(expected, expected_companions);
        if (own != expected || companions != expected_companions)
            return state.SkipWithError("wrong order: not timed");
    }
    std::vector<std::vector<double>> companions(fresh.size(), positions);
    std::size_t next = 0;
    for (auto _ : state) {
        if (next == keys.size()) {
            state.PauseTiming();
            for (std::size_t i = 0; i < keys.size(); ++i) {
                std::copy(fresh[i].begin(), fresh[i].end(), keys[i].begin());
                std::copy(positions.begin(), positions.end(), companions[i].begin());
            }
            next = 0;
            state.ResumeTiming();
        }
        sort(keys[next], companions[next]);
        benchmark::DoNotOptimize(keys[next].data());
        ++next;
    }
}

void add_fresh(const std::string& name, const std::string& implementation, const PairSort& sort,
               const PairSort& reference)
{
    for (const Length& length : s_lengths)
        benchmark::RegisterBenchmark((name + "_" + length.name + "/" + implementation).c_str(),
                                     [=](benchmark::State& state) { run_fresh(state, length, sort, reference); });
}

PairSort alone(const Sort& sort)
{
    return [sort](std::vector<double>& keys, std::vector<double>&) { sort(keys); };
}

constexpr auto s_std_sort = [](auto& v) { std::sort(v.begin(), v.end()); };

} // namespace

void add_sort(const std::string& implementation, const Sort& sort)
{
    add_fresh("sort", implementation, alone(sort), alone(s_std_sort));
}

void add_rank(const std::string& implementation, const Sort& rank)
{
    add_fresh("rank", implementation, alone(rank), alone(rank_by(s_std_sort)));
}

void add_dual_sort(const std::string& implementation, const PairSort& sort)
{
    add_fresh("dual_sort", implementation, sort, dual_by(s_std_sort));
}

namespace {

void add_qmml()
{
    const auto add = [](const std::string& name, int (*statistic)(const double*, int, int, double*)) {
        add_statistic(name, "qmml", [=](const std::vector<double>& v) {
            double result[3] = {};
            statistic(v.data(), 1, static_cast<int>(v.size()), result);
            return result[0] + result[1] + result[2];
        });
    };
    add("mean", ValMean);
    add("variance", ValVariance);
    add("min", ValMin);
    add("max", ValMax);
    Func_SetPercentileMethod(6); // what the peers interpolate
    add("median", ValMedian);
    add("quartiles", ValQuartiles);
    add("percentile",
        [](const double* v, int start, int n, double* out) { return ValPercentile(v, start, n, 90, out); });
    add_sort("qmml", [](std::vector<double>& v) { SortDoubleArray(v.data(), static_cast<int>(v.size())); });
    add_rank("qmml", [](std::vector<double>& v) { QelVectorRank(v.data(), 1, 2, static_cast<int>(v.size())); });
    add_dual_sort("qmml", [](std::vector<double>& keys, std::vector<double>& companions) {
        DualSort(keys.data(), companions.data(), static_cast<int>(keys.size()), 1);
    });
}

// The loops that a user would write.
double plain_mean(const std::vector<double>& values, double& count)
{
    double sum = 0;
    std::size_t present = 0;
    for (const double v : values)
        if (!std::isnan(v)) {
            sum += v;
            ++present;
        }
    count = static_cast<double>(present);
    return sum / count;
}

double plain_variance(const std::vector<double>& values)
{
    double count = 0, squares = 0;
    const double mean = plain_mean(values, count);
    for (const double v : values)
        if (!std::isnan(v))
            squares += (v - mean) * (v - mean);
    return squares / (count - 1);
}

double nth_element_quantile(std::vector<double>& v, double q)
{
    const double position = static_cast<double>(v.size() - 1) * q;
    const auto below = static_cast<std::ptrdiff_t>(position);
    std::nth_element(v.begin(), v.begin() + below, v.end());
    const double low = v[static_cast<std::size_t>(below)];
    return low + (*std::min_element(v.begin() + below + 1, v.end()) - low) * (position - static_cast<double>(below));
}

void add_standard_library()
{
    const std::string name = "std";
    add_statistic("mean", name, [](const std::vector<double>& v) {
        double count = 0;
        return plain_mean(v, count);
    });
    add_statistic("variance", name, plain_variance);
    const auto fold = [](auto better) {
        return [better](const std::vector<double>& values) {
            double best = std::numeric_limits<double>::quiet_NaN();
            for (const double v : values)
                if (!std::isnan(v) && !better(best, v))
                    best = v;
            return best;
        };
    };
    add_statistic("min", name, fold(std::less_equal<>()));
    add_statistic("max", name, fold(std::greater_equal<>()));
    const auto quantiles = [](std::vector<double> all) {
        return [all = std::move(all), buffer = std::vector<double>()](const std::vector<double>& v) mutable {
            double sum = 0;
            present(v, buffer);
            for (const double q : all)
                sum += nth_element_quantile(buffer, q);
            return sum;
        };
    };
    add_statistic("median", "std_nth_element", quantiles({0.5}));
    add_statistic("quartiles", "std_nth_element", quantiles({0.25, 0.5, 0.75}));
    add_statistic("percentile", "std_nth_element", quantiles({0.9}));
    add_sort("std_sort", s_std_sort);
    add_rank("std_sort", rank_by(s_std_sort));
    add_dual_sort("std_sort", dual_by(s_std_sort));
}

} // namespace
} // namespace qmml::bench

int main(int argc, char** argv)
{
    using namespace qmml::bench;
    add_standard_library();
    Peer<>::add_all();
    add_qmml();
    return run_benchmarks(argc, argv);
}
