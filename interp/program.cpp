#include "interp/program.h"

#include "core/elementary.h"
#include "core/missing.h"
#include "distrib/result.h"
#include "interp/operations.h"
#include "platform/float_guard.h"
#include "platform/opaque.h"

#include <cmath>
#include <qmml/distrib.h>

namespace qmml::interp {

void Program::link(Frame& frame) noexcept
{
    const auto place = [&](const Operand& operand) -> const double* {
        switch (operand.kind) {
        case Operand::constant: return &constants[operand.index];
        case Operand::variable: return &frame.variables[operand.index];
        case Operand::temporary: break;
        }
        return &frame.temporaries[operand.index];
    };
    for (auto& instruction : instructions) {
        instruction.target = &frame.temporaries[instruction.result];
        for (int i = 0; i < instruction.operands; ++i)
            instruction.source[i] = place(instruction.from[i]);
    }
    result_source = place(result);
}

// A distribution's error result is a missing value in a formula; the pattern is ORed into it.
static double without_error_value(double value) noexcept
{
    if (bits_of(value) == bits_of(distr_error_value)) [[unlikely]]
        set_nan(value);
    return value;
}

// The comparison is made in numbers: a value beyond the integers belongs to no graph, and neither does a NaN.
static double is_graph(double number, long long graph) noexcept
{
    return truth<ScalarLane>(!ScalarLane::differ(Truncate::apply<ScalarLane>(number), static_cast<double>(graph + 1)) &&
                             !is_nan(number));
}

static double is_graph_at(double row, double column, const Graph& graph) noexcept
{
    if (graph.mode != 2)
        return is_graph(row, graph.graph);
    if (graph.columns == 0)
        return 0.0;
    const long long g = graph.graph;
    return is_graph(row, g / graph.columns) * is_graph(column, g % graph.columns);
}

template <class Binary>
static inline void binary(const Instruction& i) noexcept
{
    *i.target = Binary::template apply<ScalarLane>(*i.source[0], *i.source[1]);
}

template <class Unary>
static inline void unary(const Instruction& i) noexcept
{
    *i.target = Unary::template apply<ScalarLane>(*i.source[0]);
}

static inline void run(const Instruction& i, const Graph& graph) noexcept
{
    const double* const* const s = i.source;
    switch (i.operation) {
    case Operation::power: *i.target = elementary::pow(*s[0], *s[1]); break;
    case Operation::multiply: binary<Multiply>(i); break;
    case Operation::divide: binary<Divide>(i); break;
    case Operation::add: binary<Add>(i); break;
    case Operation::subtract: binary<Subtract>(i); break;
    case Operation::equal: binary<Equal>(i); break;
    case Operation::greater: binary<Greater>(i); break;
    case Operation::greater_equal: binary<GreaterEqual>(i); break;
    case Operation::less: binary<Less>(i); break;
    case Operation::less_equal: binary<LessEqual>(i); break;
    case Operation::not_equal: binary<NotEqual>(i); break;
    case Operation::logical_and: binary<And>(i); break;
    case Operation::logical_or: binary<Or>(i); break;
    case Operation::logical_not: unary<Not>(i); break;
    case Operation::truth_and: binary<TruthAnd>(i); break;
    case Operation::truth_or: binary<TruthOr>(i); break;
    case Operation::minus: unary<Minus>(i); break;
    case Operation::ifgraph: *i.target = is_graph(*s[0], graph.graph); break;
    case Operation::ifgraph_row_column: *i.target = is_graph_at(*s[0], *s[1], graph); break;
    case Operation::absolute: unary<Absolute>(i); break;
    case Operation::sign: unary<Sign>(i); break;
    case Operation::truncate: unary<Truncate>(i); break;
    case Operation::square_root: unary<SquareRoot>(i); break;
    case Operation::exponential: *i.target = elementary::exp(*s[0]); break;
    case Operation::logarithm: *i.target = elementary::log(*s[0]); break;
    case Operation::sine: *i.target = elementary::sin(*s[0]); break;
    case Operation::cosine: *i.target = elementary::cos(*s[0]); break;
    case Operation::minimum: binary<Minimum>(i); break;
    case Operation::maximum: binary<Maximum>(i); break;
    case Operation::call_1: *i.target = i.call.one(*s[0]); break;
    case Operation::call_2: *i.target = i.call.two(*s[0], *s[1]); break;
    case Operation::distribution_1: *i.target = without_error_value(i.call.one(*s[0])); break;
    case Operation::distribution_2: *i.target = without_error_value(i.call.two(*s[0], *s[1])); break;
    case Operation::normal:
    case Operation::lower_normal:
    case Operation::distribution_3: *i.target = without_error_value(i.call.three(*s[0], *s[1], *s[2])); break;
    case Operation::distribution_4: *i.target = without_error_value(i.call.four(*s[0], *s[1], *s[2], *s[3])); break;
    case Operation::invalid: break;
    }
}

// Not inlined: what an instruction does stays between the readings of the unit around it.
[[gnu::noinline]] void execute(const Instruction& instruction, const Graph& graph) noexcept
{
    run(instruction, graph);
}

void execute(const Program& program, const Graph& graph) noexcept
{
    for (const auto& instruction : program.instructions)
        run(instruction, graph);
}

// Relations, logic, extremes, signs: no NaN is a fault to them, a signalling one included.
static bool is_quiet(Operation operation) noexcept
{
    switch (operation) {
    case Operation::equal:
    case Operation::not_equal:
    case Operation::greater:
    case Operation::greater_equal:
    case Operation::less:
    case Operation::less_equal:
    case Operation::logical_and:
    case Operation::logical_or:
    case Operation::logical_not:
    case Operation::truth_and:
    case Operation::truth_or:
    case Operation::minus:
    case Operation::absolute:
    case Operation::sign:
    case Operation::minimum:
    case Operation::maximum: return true;
    default: return false;
    }
}

// Where both operands are NaNs, which one wins is settled without the sum or the product: its fault is not.
static void raise_fault_of(const Instruction& i) noexcept
{
    const double a = platform::opaque(*i.source[0]), b = platform::opaque(*i.source[1]);
    platform::opaque(i.operation == Operation::add ? a + b : a * b);
}

void execute_for_faults(const Program& program, const Graph& graph) noexcept
{
    for (const auto& instruction : program.instructions) {
        const unsigned before = platform::read_unit();
        execute(instruction, graph);
        if (is_quiet(instruction.operation))
            platform::write_unit(before);
        else if (instruction.operation == Operation::add || instruction.operation == Operation::multiply)
            raise_fault_of(instruction);
    }
}

} // namespace qmml::interp
