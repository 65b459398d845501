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

} // namespace qmml::bench
