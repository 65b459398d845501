// Formulas: one case per call, a column of a million cases, and construction with a single evaluation.
#include "formula_bench.h"

#include <qmml/interp.h>
#include <qmml/platform.h>

namespace qmml::bench {

const std::array<Formula, 4> formulas = {{
    {"formula1", "x+y*2-3/x", "x+y*2-3/x", [](double x, double y) { return x + y * 2 - 3 / x; }},
    {"formula2", "sqrt(x^2+y^2)*sin(x)-log(abs(y)+1)", "sqrt(x^2+y^2)*sin(x)-ln(abs(y)+1)",
     [](double x, double y) { return std::sqrt(x * x + y * y) * std::sin(x) - std::log(std::abs(y) + 1); }},
    {"formula3", "(x>1)&(y<2)|~(x=y)", "(x>1)&&(y<2)||(x!=y)",
     [](double x, double y) { return ((x > 1) && (y < 2)) || x != y ? 1.0 : 0.0; }},
    {"formula4", "inormal(x,0,1)*2-exp(-x^2/2)", "inormal(x,0,1)*2-exp(-x^2/2)",
     [](double x, double) { return std::erfc(-x / std::sqrt(2.0)) - std::exp(-x * x / 2); }},
}};

Cases make_cases(std::size_t count)
{
    std::uint64_t state = 1;
    const auto uniform = [&state] {
        std::uint64_t z = (state += 0x9e3779b97f4a7c15u);
        z = (z ^ (z >> 30)) * 0xbf58476d1ce4e5b9u;
        z = (z ^ (z >> 27)) * 0x94d049bb133111ebu;
        z ^= z >> 31;
        return static_cast<double>((z >> 11) + 1) * 0x1p-53;
    };
    Cases cases;
    cases.x.resize(count);
    cases.y.resize(count);
    for (std::size_t i = 0; i < count; ++i) {
        cases.x[i] = 3 * uniform();
        cases.y[i] = 3 * uniform();
        if (i % 8 == 7)
            cases.y[i] = cases.x[i];
    }
    return cases;
}

bool results_are_right(const Formula& formula, const Cases& cases, std::span<const double> results)
{
    for (std::size_t i = 0; i < results.size(); ++i) {
        const double expected = formula.truth(cases.x[i], cases.y[i]);
        if (!(std::abs(results[i] - expected) <= s_formula_tolerance * std::max(1.0, std::abs(expected))))
            return false;
    }
    return true;
}

namespace {

void add_qmml(const Formula& formula)
{
    const std::string name = formula.name;
    benchmark::RegisterBenchmark((name + "_call/qmml").c_str(), [formula](benchmark::State& state) {
        ExInterpreter interpreter(formula.qmml, 2);
        time_calls(state, formula, [&interpreter](double x, double y) {
            double result;
            interpreter.ExpresVal(&result, x, y);
            return result;
        });
    });
    benchmark::RegisterBenchmark((name + "_column_1e6/qmml").c_str(), [formula](benchmark::State& state) {
        ExInterpreter interpreter(formula.qmml, 2);
        time_column(state, formula, [&interpreter](Cases& cases, std::vector<double>& results) {
            return [&] {
                const double* columns[] = {cases.x.data(), cases.y.data()};
                interpreter.ExpresColumn(results.data(), static_cast<int>(results.size()), columns);
            };
        });
    });
    benchmark::RegisterBenchmark((name + "_once/qmml").c_str(), [formula](benchmark::State& state) {
        time_once(state, formula, [&formula](double x, double y) {
            double result;
            ExInterpreter(formula.qmml, 2).ExpresVal(&result, x, y);
            return result;
        });
    });
}

} // namespace
} // namespace qmml::bench

int main(int argc, char** argv)
{
    using namespace qmml::bench;
    QMMLSetSeparators('.', ','); // the formulas are written for these, whatever the user's locale says
    for (const Formula& formula : formulas) {
        Peer<const Formula&>::add_all(formula);
        add_qmml(formula);
    }
    return run_benchmarks(argc, argv);
}
