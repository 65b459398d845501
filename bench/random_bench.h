// Random deviates: time per deviate, after the first hundred thousand have had the right mean and variance.
#pragma once

#include "harness.h"

namespace qmml::bench {

struct Deviate {
    double mean, variance, fourth_moment; // the last one about the mean
};

inline constexpr Deviate s_uniform = {0.5, 1.0 / 12, 1.0 / 80};
inline constexpr Deviate s_normal = {0, 1, 3};
constexpr Deviate poisson(double mean)
{
    return {mean, mean, mean * (1 + 3 * mean)};
}

bool moments_are_right(const Deviate& deviate, const std::function<double()>& draw);

template <class Draw>
void add_deviate(const std::string& name, const Deviate& deviate, Draw draw)
{
    benchmark::RegisterBenchmark(name.c_str(), [=](benchmark::State& state) {
        auto generator = draw;
        if (!moments_are_right(deviate, std::ref(generator)))
            return state.SkipWithError("wrong distribution: not timed");
        for (auto _ : state)
            benchmark::DoNotOptimize(generator());
    });
}

// Distinct integers from 1 to range, in any order.
struct Selection {
    const char* name;
    int count, range;
};
inline constexpr Selection s_selections[] = {
    {"unique_integers_10_of_100", 10, 100},
    {"unique_integers_100_of_1000", 100, 1000},
    {"unique_integers_1000_of_20000", 1000, 20'000},
    {"unique_integers_10000_of_500000", 10'000, 500'000},
    {"unique_integers_100_of_1000000", 100, 1'000'000},
};

bool are_distinct(std::vector<int> integers, int range);

// select(out) fills the vector.
template <class Select>
void add_selection(const Selection& selection, const std::string& implementation, Select select)
{
    benchmark::RegisterBenchmark((std::string(selection.name) + '/' + implementation).c_str(),
                                 [=](benchmark::State& state) mutable {
                                     std::vector<int> out(static_cast<std::size_t>(selection.count));
                                     select(out);
                                     if (!are_distinct(out, selection.range))
                                         return state.SkipWithError("wrong integers: not timed");
                                     for (auto _ : state) {
                                         select(out);
                                         benchmark::ClobberMemory();
                                     }
                                 });
}

} // namespace qmml::bench
