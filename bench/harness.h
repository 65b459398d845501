// What the benchmark programs share: workloads with several implementations each, named "<workload>/<implementation>".
#pragma once

#include <benchmark/benchmark.h>

#include <cmath>
#include <functional>
#include <map>
#include <memory>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

namespace qmml::bench {

// A function of one double at fixed points; the parameters are bound by whoever adds an implementation.
struct Workload {
    std::string name;
    std::vector<double> points;
    double tolerance = 0; // what the methods compared promise together, times max(1, |value|)
    std::function<double(double)> reference;

    bool agrees(const std::function<double(double)>& candidate) const
    {
        for (const double x : points) {
            const double expected = reference(x);
            if (!(std::abs(candidate(x) - expected) <= tolerance * std::max(1.0, std::abs(expected))))
                return false;
        }
        return true;
    }
};

class Suite {
public:
    void describe(std::string name, std::vector<double> points, double tolerance)
    {
        auto workload = std::make_shared<Workload>(Workload{name, std::move(points), tolerance, {}});
        m_workloads.emplace(std::move(name), std::move(workload));
    }

    // The first peer that is added becomes the reference of the others. The loop is instantiated for each function
    // object, so that a peer made of headers is inlined as it would be in a user's program.
    template <class Function>
    void add(const std::string& workload_name, const std::string& implementation, Function function)
    {
        const auto found = m_workloads.find(workload_name);
        if (found == m_workloads.end())
            throw std::logic_error("no workload " + workload_name);
        const std::shared_ptr<Workload> workload = found->second;
        if (implementation != "qmml" && !workload->reference)
            workload->reference = function;
        benchmark::RegisterBenchmark((workload_name + "/" + implementation).c_str(),
                                     [workload, function](benchmark::State& state) {
                                         if (!workload->reference)
                                             state.SetLabel("unchecked: no peer");
                                         else if (!workload->agrees(function))
                                             return state.SkipWithError("wrong value: not timed");
                                         const std::vector<double> points = workload->points;
                                         const auto count = static_cast<benchmark::IterationCount>(points.size());
                                         while (state.KeepRunningBatch(count)) // so that times are per call
                                             for (const double x : points)
                                                 benchmark::DoNotOptimize(function(x));
                                     });
    }

private:
    std::map<std::string, std::shared_ptr<Workload>> m_workloads;
};

// Peers stand in files of their own, which are compiled only where the peer is installed, and announce themselves with
// what adds them to a program's workloads.
template <class... Arguments>
class Peer {
public:
    using Add = void (*)(Arguments...);

    explicit Peer(Add add) { list().push_back(add); }

    static void add_all(Arguments... arguments)
    {
        for (const Add add : list())
            add(arguments...);
    }

private:
    static std::vector<Add>& list()
    {
        static std::vector<Add> s_peers;
        return s_peers;
    }
};

inline int run_benchmarks(int argc, char** argv)
{
    benchmark::Initialize(&argc, argv);
    if (benchmark::ReportUnrecognizedArguments(argc, argv))
        return 1;
    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();
    return 0;
}

} // namespace qmml::bench
