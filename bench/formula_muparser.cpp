// muParser: one Eval per case with bound variables ("muparser"), and its bulk mode for columns ("muparser_bulk").
#include "formula_bench.h"

#include <muParser.h>

#include <numbers>

namespace qmml::bench {
namespace {

// It has no normal distribution. The runtime's erfc is the fastest that a user could bind: GSL, Boost.Math and nmath
// take twice its time and more.
double normal_lower_tail(double x, double mu, double sigma)
{
    return 0.5 * std::erfc((mu - x) / sigma * (1 / std::numbers::sqrt2));
}

void prepare(mu::Parser& parser, const Formula& formula, double* x, double* y)
{
    parser.DefineVar("x", x);
    parser.DefineVar("y", y);
    parser.DefineFun("inormal", normal_lower_tail);
    parser.SetExpr(formula.muparser);
}

void add_muparser(const Formula& formula)
{
    const std::string name = formula.name;
    benchmark::RegisterBenchmark((name + "_call/muparser").c_str(), [formula](benchmark::State& state) {
        mu::Parser parser;
        double x = 0, y = 0;
        prepare(parser, formula, &x, &y);
        time_calls(state, formula, [&](double case_x, double case_y) {
            x = case_x;
            y = case_y;
            return parser.Eval();
        });
    });
    benchmark::RegisterBenchmark((name + "_column_1e6/muparser").c_str(), [formula](benchmark::State& state) {
        mu::Parser parser;
        double x = 0, y = 0;
        prepare(parser, formula, &x, &y);
        time_column(state, formula, [&](Cases& cases, std::vector<double>& results) {
            return [&] {
                for (std::size_t i = 0; i < results.size(); ++i) {
                    x = cases.x[i];
                    y = cases.y[i];
                    results[i] = parser.Eval();
                }
            };
        });
    });
    benchmark::RegisterBenchmark((name + "_column_1e6/muparser_bulk").c_str(), [formula](benchmark::State& state) {
        mu::Parser parser;
        time_column(state, formula, [&](Cases& cases, std::vector<double>& results) {
            prepare(parser, formula, cases.x.data(), cases.y.data());
            return [&] { parser.Eval(results.data(), static_cast<int>(results.size())); };
        });
    });
    benchmark::RegisterBenchmark((name + "_once/muparser").c_str(), [formula](benchmark::State& state) {
        time_once(state, formula, [&formula](double x, double y) {
            mu::Parser parser;
            prepare(parser, formula, &x, &y);
            return parser.Eval();
        });
    });
}

const Peer<const Formula&> s_muparser(add_muparser);

} // namespace
} // namespace qmml::bench
