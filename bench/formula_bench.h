// The formulas, the cases they are evaluated for, and the truth that every implementation has to meet.
#pragma once

#include "harness.h"

#include <array>
#include <cstdint>
#include <span>

namespace qmml::bench {

struct Formula {
    const char* name;
    const char* qmml;
    const char* muparser; // with the same truth values where the operators differ
    double (*truth)(double x, double y);
};

extern const std::array<Formula, 4> formulas;

struct Cases {
    std::vector<double> x, y;
};

// Column results have no place to be compared with, so the same splitmix64 stream feeds C++ and NumPy: x and y uniform
// on (0, 3], every eighth y equal to its x so that "=" is true now and then.
Cases make_cases(std::size_t count);

inline constexpr std::size_t s_call_cases = 1024, s_column_cases = 1'000'000;
inline constexpr double s_formula_tolerance = 1e-8; // that of the normal tail (AS 66); rounding is far below

// Whether the results of these cases are the truth; an implementation that is wrong is not timed.
bool results_are_right(const Formula& formula, const Cases& cases, std::span<const double> results);

// evaluate(x, y) for one case.
template <class Evaluate>
void time_calls(benchmark::State& state, const Formula& formula, Evaluate evaluate)
{
    const Cases cases = make_cases(s_call_cases);
    std::vector<double> results;
    for (std::size_t i = 0; i < s_call_cases; ++i)
        results.push_back(evaluate(cases.x[i], cases.y[i]));
    if (!results_are_right(formula, cases, results))
        return state.SkipWithError("wrong value: not timed");
    while (state.KeepRunningBatch(s_call_cases)) // so that times are per call
        for (std::size_t i = 0; i < s_call_cases; ++i)
            benchmark::DoNotOptimize(evaluate(cases.x[i], cases.y[i]));
}

// prepare(cases, results) gives a function that fills all results.
template <class Prepare>
void time_column(benchmark::State& state, const Formula& formula, Prepare prepare)
{
    Cases cases = make_cases(s_column_cases);
    std::vector<double> results(s_column_cases);
    auto evaluate = prepare(cases, results);
    evaluate();
    if (!results_are_right(formula, cases, results))
        return state.SkipWithError("wrong value: not timed");
    while (state.KeepRunningBatch(s_column_cases)) { // so that times are per case
        evaluate();
        benchmark::ClobberMemory();
    }
}

// make_and_evaluate(x, y): construct, evaluate one case, destroy.
template <class Evaluate>
void time_once(benchmark::State& state, const Formula& formula, Evaluate make_and_evaluate)
{
    const Cases cases = make_cases(1);
    const double result = make_and_evaluate(cases.x[0], cases.y[0]);
    if (!results_are_right(formula, cases, {&result, 1}))
        return state.SkipWithError("wrong value: not timed");
    for (auto _ : state)
        benchmark::DoNotOptimize(make_and_evaluate(cases.x[0], cases.y[0]));
}

} // namespace qmml::bench
