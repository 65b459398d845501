// Dense matrices, column by column. Every implementation pays for the one copy of its input that it destroys.
#pragma once

#include "harness.h"

#include <algorithm>
#include <cstddef>
#include <set>
#include <span>

namespace qmml::bench {

using Numbers = std::vector<double>;

// One size of one operation. The matrices are random.
struct Problem {
    int rows = 0, columns = 0;
    Numbers a, b; // b: a second matrix, or the right-hand side

    std::size_t count() const { return a.size(); }
};

// What an answer holds, one after the other: matmul c; inverse, pseudo_inverse, sweep_all the inverse; determinant one
// number; solve x; eigen_symmetric n values and the vectors; svd U, the values and V; singular_values in descending
// order; cholesky the upper factor with zeros below; correlation all of the matrix.
struct Operation {
    const char* name;
    void (*make)(Problem&);
    double (*error)(const Problem&, std::span<const double> answer); // relative, NaN where the answer is no good at all
};

const Operation& operation(const std::string& name);
const std::vector<int>& sizes(); // of the square problems
const Problem& problem(const std::string& workload, const Operation& operation, int rows, int columns);

// A task is an object made for a problem, with run() to be timed and answer() for what run() left behind.
template <class Task>
void add_task(const std::string& operation_name, int rows, int columns, const std::string& suffix,
              const std::string& implementation)
{
    const std::string workload = operation_name + "_" + suffix, name = workload + "/" + implementation;
    auto* const benchmark =
        benchmark::RegisterBenchmark(name.c_str(), [=, &what = operation(operation_name)](benchmark::State& state) {
            static std::set<std::string> s_checked;
            const Problem& given = problem(workload, what, rows, columns);
            Task task(given);
            if (!s_checked.contains(name)) {
                task.run();
                const Numbers answer = task.answer();
                if (const double error = what.error(given, answer); !(error <= 1e-13 * std::max(rows, 100)))
                    return state.SkipWithError(("error " + std::to_string(error) + ": not timed").c_str());
                s_checked.insert(name);
            }
            for (auto _ : state) {
                task.run();
                benchmark::ClobberMemory();
            }
        });
    if (rows * columns >= 1024 * 1024)
        benchmark->Iterations(1);
}

// For every size up to the largest one that is worth waiting for.
template <class Task>
void add_square(const std::string& operation_name, const std::string& implementation, int largest = 1024)
{
    for (const int n : sizes())
        if (n <= largest)
            add_task<Task>(operation_name, n, n, "n" + std::to_string(n), implementation);
}

template <class Task>
void add_correlation(const std::string& implementation)
{
    add_task<Task>("correlation", 1000, 50, "1000x50", implementation);
    add_task<Task>("correlation", 100'000, 20, "100000x20", implementation);
}

} // namespace qmml::bench
