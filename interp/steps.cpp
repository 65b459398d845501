#include "interp/steps.h"

#include "core/elementary.h"
#include "distrib/normal.h"
#include "distrib/result.h"
#include "interp/operations.h"
#include "platform/simd/truth.h"

#include <algorithm>
#include <array>
#include <cmath>

namespace qmml::interp {
namespace {

// Operations on finite numbers: nothing needs to be said about NaNs.
struct PlainAdd {
    static double apply(const Step&, double a, double b) noexcept { return a + b; }
};
struct PlainSubtract {
    static double apply(const Step&, double a, double b) noexcept { return a - b; }
};
struct PlainMultiply {
    static double apply(const Step&, double a, double b) noexcept { return a * b; }
};
struct PlainEqual {
    static double apply(const Step&, double a, double b) noexcept { return platform::equal(a, b); }
};
struct PlainNotEqual {
    static double apply(const Step&, double a, double b) noexcept { return platform::not_equal(a, b); }
};
struct PlainLess {
    static double apply(const Step&, double a, double b) noexcept { return platform::less(a, b); }
};
struct PlainLessEqual {
    static double apply(const Step&, double a, double b) noexcept { return platform::less_equal(a, b); }
};
struct PlainGreater {
    static double apply(const Step&, double a, double b) noexcept { return platform::less(b, a); }
};
struct PlainGreaterEqual {
    static double apply(const Step&, double a, double b) noexcept { return platform::less_equal(b, a); }
};
struct PlainMaximum {
    static double apply(const Step&, double a, double b) noexcept { return b > a ? b : a; }
};
template <class Op>
struct Same {
    template <class... D>
    static auto apply(const Step&, D... operands) noexcept -> decltype(Op::template apply<ScalarLane>(operands...))
    {
        return Op::template apply<ScalarLane>(operands...);
    }
};

// An operand outside the domain: the steps go on with a number that does them no harm, and their result is thrown away.
inline double spoil(const Step& step) noexcept
{
    *step.spoilt = true;
    return step.substitute;
}

struct CheckedDivide {
    static double apply(const Step& step, double a, double b) noexcept
    {
        if (b == 0.0) [[unlikely]]
            return spoil(step);
        return a / b;
    }
};
struct CheckedSquareRoot {
    static double apply(const Step& step, double a) noexcept
    {
        if (a < 0.0) [[unlikely]]
            return spoil(step);
        return std::sqrt(a);
    }
};
struct CheckedExponential {
    static double apply(const Step& step, double a) noexcept
    {
        if (std::fabs(a) > s_exponential_limit) [[unlikely]]
            return spoil(step);
        return elementary::exp_normal_range<ScalarLane>(a);
    }
};
struct CheckedLogarithm {
    static double apply(const Step& step, double a) noexcept
    {
        if (a <= 0.0) [[unlikely]]
            return spoil(step);
        return elementary::log_normal_range<ScalarLane>(a, elementary::s_exponent_origin);
    }
};
struct PlainSine {
    static double apply(const Step&, double a) noexcept { return elementary::sin(a); }
};
struct PlainCosine {
    static double apply(const Step&, double a) noexcept { return elementary::cos(a); }
};
struct PlainSquare {
    static double apply(const Step&, double a) noexcept { return a * a; }
};
struct LowerNormal {
    static double apply(const Step& step, double x) noexcept
    {
        return distr_ok(normal_lower((x - *step.source[1]) / *step.source[2]));
    }
};

enum class Place { previous, memory };

template <Place P>
inline double fetch(const Step& step, int i, double previous) noexcept
{
    return P == Place::previous ? previous : *step.source[i];
}

inline double keep(const Step& step, double value) noexcept
{
    *step.target = value;
    return value;
}

using Run = double (*)(const Step&, double) noexcept;

template <class Op, Place A>
double unary(const Step& step, double previous) noexcept
{
    return keep(step, Op::apply(step, fetch<A>(step, 0, previous)));
}

template <class Op, Place A, Place B>
double binary(const Step& step, double previous) noexcept
{
    return keep(step, Op::apply(step, fetch<A>(step, 0, previous), fetch<B>(step, 1, previous)));
}

template <class Op>
inline double apply_to_memory(const Step& step) noexcept
{
    if constexpr (requires { Op::apply(step, 0.0, 0.0); })
        return Op::apply(step, *step.source[0], *step.source[1]);
    else
        return Op::apply(step, *step.source[0]);
}

// Two operations in one step: the inner one on memory, the outer one on its result and on a third operand.
template <class Outer, class Inner, Place Other>
double inner_right(const Step& step, double previous) noexcept
{
    const double inner = apply_to_memory<Inner>(step);
    return keep(step, Outer::apply(step, fetch<Other>(step, 2, previous), inner));
}

template <class Outer, class Inner>
double inner_left(const Step& step, double) noexcept
{
    const double inner = apply_to_memory<Inner>(step);
    return keep(step, Outer::apply(step, inner, *step.source[2]));
}

struct UnaryRuns {
    Operation operation;
    Run previous, memory;
};

template <class Op>
constexpr UnaryRuns unary_runs(Operation operation)
{
    return {operation, unary<Op, Place::previous>, unary<Op, Place::memory>};
}

constexpr auto s_unary = std::to_array<UnaryRuns>({
    unary_runs<Same<Not>>(Operation::logical_not),
    unary_runs<Same<Minus>>(Operation::minus),
    unary_runs<Same<Absolute>>(Operation::absolute),
    unary_runs<Same<Sign>>(Operation::sign),
    unary_runs<Same<Truncate>>(Operation::truncate),
    unary_runs<CheckedSquareRoot>(Operation::square_root),
    unary_runs<CheckedExponential>(Operation::exponential),
    unary_runs<CheckedLogarithm>(Operation::logarithm),
    unary_runs<PlainSine>(Operation::sine),
    unary_runs<PlainCosine>(Operation::cosine),
    unary_runs<PlainSquare>(Operation::power),
    unary_runs<LowerNormal>(Operation::lower_normal),
});

struct BinaryRuns {
    Operation operation;
    Run previous_memory, memory_previous, memory_memory;
};

template <class Op>
constexpr BinaryRuns binary_runs(Operation operation)
{
    return {operation, binary<Op, Place::previous, Place::memory>, binary<Op, Place::memory, Place::previous>,
            binary<Op, Place::memory, Place::memory>};
}

constexpr auto s_binary = std::to_array<BinaryRuns>({
    binary_runs<PlainAdd>(Operation::add),
    binary_runs<PlainSubtract>(Operation::subtract),
    binary_runs<PlainMultiply>(Operation::multiply),
    binary_runs<CheckedDivide>(Operation::divide),
    binary_runs<PlainEqual>(Operation::equal),
    binary_runs<PlainNotEqual>(Operation::not_equal),
    binary_runs<PlainGreater>(Operation::greater),
    binary_runs<PlainGreaterEqual>(Operation::greater_equal),
    binary_runs<PlainLess>(Operation::less),
    binary_runs<PlainLessEqual>(Operation::less_equal),
    binary_runs<Same<And>>(Operation::logical_and),
    binary_runs<Same<Or>>(Operation::logical_or),
    binary_runs<Same<Minimum>>(Operation::minimum),
    binary_runs<PlainMaximum>(Operation::maximum),
});

struct FusedRuns {
    Operation outer, inner;
    Run right_previous, right_memory, left;
};

template <class Outer, class Inner>
constexpr FusedRuns fused_runs(Operation outer, Operation inner)
{
    return {outer, inner, inner_right<Outer, Inner, Place::previous>, inner_right<Outer, Inner, Place::memory>,
            inner_left<Outer, Inner>};
}

// Not in a division: a step has one substitute.
template <class Outer>
constexpr auto arithmetic_in(Operation outer)
{
    return std::to_array<FusedRuns>({
        fused_runs<Outer, PlainAdd>(outer, Operation::add),
        fused_runs<Outer, PlainSubtract>(outer, Operation::subtract),
        fused_runs<Outer, PlainMultiply>(outer, Operation::multiply),
        fused_runs<Outer, CheckedDivide>(outer, Operation::divide),
        fused_runs<Outer, Same<Absolute>>(outer, Operation::absolute),
        fused_runs<Outer, CheckedSquareRoot>(outer, Operation::square_root),
        fused_runs<Outer, CheckedExponential>(outer, Operation::exponential),
        fused_runs<Outer, CheckedLogarithm>(outer, Operation::logarithm),
        fused_runs<Outer, PlainSine>(outer, Operation::sine),
        fused_runs<Outer, PlainCosine>(outer, Operation::cosine),
    });
}

template <class Outer>
constexpr auto relations_in(Operation outer)
{
    return std::to_array<FusedRuns>({fused_runs<Outer, PlainEqual>(outer, Operation::equal),
                                     fused_runs<Outer, PlainNotEqual>(outer, Operation::not_equal),
                                     fused_runs<Outer, PlainGreater>(outer, Operation::greater),
                                     fused_runs<Outer, PlainGreaterEqual>(outer, Operation::greater_equal),
                                     fused_runs<Outer, PlainLess>(outer, Operation::less),
                                     fused_runs<Outer, PlainLessEqual>(outer, Operation::less_equal)});
}

template <class Table>
auto find(const Table& table, Operation operation) noexcept
{
    return std::ranges::find(table, operation, &Table::value_type::operation);
}

const FusedRuns* find_fused(Operation outer, Operation inner) noexcept
{
    static constexpr auto s_arithmetic =
        std::to_array({arithmetic_in<PlainAdd>(Operation::add), arithmetic_in<PlainSubtract>(Operation::subtract),
                       arithmetic_in<PlainMultiply>(Operation::multiply)});
    // Of two truth values the product is "and", the greater one "or".
    static constexpr auto s_logic = std::to_array(
        {relations_in<PlainMultiply>(Operation::multiply), relations_in<PlainMaximum>(Operation::maximum)});
    const auto search = [=](const auto& tables) -> const FusedRuns* {
        for (const auto& table : tables)
            for (const auto& runs : table)
                if (runs.outer == outer && runs.inner == inner)
                    return &runs;
        return nullptr;
    };
    const FusedRuns* const found = search(s_arithmetic);
    return found != nullptr ? found : search(s_logic);
}

// The relation that holds where this one does not.
Operation opposite(Operation relation) noexcept
{
    switch (relation) {
    case Operation::equal:
        return Operation::not_equal;
    case Operation::not_equal:
        return Operation::equal;
    case Operation::greater:
        return Operation::less_equal;
    case Operation::greater_equal:
        return Operation::less;
    case Operation::less:
        return Operation::greater_equal;
    case Operation::less_equal:
        return Operation::greater;
    default:
        return Operation::invalid;
    }
}

// On truth values the logical operators are arithmetic.
Operation simplified(const Instruction& instruction, const Range* ranges) noexcept
{
    switch (instruction.operation) {
    case Operation::logical_and:
        return ranges[0].truth && ranges[1].truth ? Operation::multiply : instruction.operation;
    case Operation::logical_or:
        return ranges[0].truth && ranges[1].truth ? Operation::maximum : instruction.operation;
    default:
        return instruction.operation;
    }
}

class Builder {
public:
    Builder(std::vector<Step>& steps, bool* spoilt) noexcept : m_steps(steps), m_spoilt(spoilt) {}

    void add(const Instruction& instruction, Operation operation, const Range& range)
    {
        if (turn_round(instruction) || fuse(instruction, operation))
            return;
        Step step{nullptr,
                  {instruction.source[0], instruction.source[1], instruction.source[2]},
                  instruction.target,
                  std::ldexp(1.0, range.low),
                  m_spoilt};
        const bool left = is_previous(step.source[0]);
        if (operation == Operation::power && !left) { // a square
            operation = Operation::multiply;
            step.source[1] = step.source[0];
        }
        const bool right = instruction.operands > 1 && is_previous(step.source[1]);
        if (const auto u = find(s_unary, operation); u != s_unary.end()) {
            step.run = left ? u->previous : u->memory;
        } else {
            const auto& runs = *find(s_binary, operation);
            step.run = left ? runs.previous_memory : right ? runs.memory_previous : runs.memory_memory;
        }
        m_last = left || right ? Operation::invalid : operation;
        m_steps.push_back(step);
    }

private:
    bool is_previous(const double* source) const noexcept
    {
        return !m_steps.empty() && m_steps.back().target == source;
    }

    // "not" behind a relation.
    bool turn_round(const Instruction& instruction) noexcept
    {
        const Operation turned = opposite(m_last);
        if (instruction.operation != Operation::logical_not || turned == Operation::invalid ||
            !is_previous(instruction.source[0]))
            return false;
        m_steps.back().run = find(s_binary, turned)->memory_memory;
        m_last = turned;
        return true;
    }

    // An operation on the result of one that had both operands in memory.
    bool fuse(const Instruction& instruction, Operation operation) noexcept
    {
        const FusedRuns* const runs = find_fused(operation, m_last);
        if (runs == nullptr)
            return false;
        Step& inner = m_steps.back();
        const bool left = instruction.source[0] == inner.target;
        if (!left && instruction.source[1] != inner.target)
            return false;
        inner.source[2] = instruction.source[left ? 1 : 0];
        const bool third_is_previous = m_steps.size() > 1 && m_steps[m_steps.size() - 2].target == inner.source[2];
        inner.run = left ? runs->left : third_is_previous ? runs->right_previous : runs->right_memory;
        inner.target = instruction.target;
        m_last = Operation::invalid;
        return true;
    }

    std::vector<Step>& m_steps;
    bool* const m_spoilt;
    Operation m_last = Operation::invalid; // of the last step, where all its operands are in memory
};

} // namespace

void Steps::build(const Program& program, Frame& frame)
{
    m_steps.reserve(program.instructions.size());
    Range temporaries[s_stack_limit];
    Builder builder(m_steps, &frame.spoilt);
    for (const auto& instruction : program.instructions) {
        Range ranges[4];
        const double* constants[4] = {};
        for (int i = 0; i < instruction.operands; ++i) {
            const Operand& from = instruction.from[i];
            if (from.kind == Operand::constant)
                constants[i] = instruction.source[i];
            ranges[i] = from.kind == Operand::constant   ? range_of_constant(*instruction.source[i])
                        : from.kind == Operand::variable ? s_calm_range
                                                         : temporaries[from.index];
        }
        const Outcome outcome = outcome_of(instruction.operation, ranges, constants);
        if (outcome.hazard == Hazard::unsafe)
            return;
        temporaries[instruction.result] = outcome.range;
        builder.add(instruction, simplified(instruction, ranges), outcome.range);
    }
    if (program.result.kind != Operand::constant || is_calm(*program.result_source))
        m_result = program.result_source;
}

} // namespace qmml::interp
