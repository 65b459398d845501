#include "interp/step_runs.h"

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
struct PlainBoth {
    static double apply(const Step&, double a, double b) noexcept { return platform::both(a, b); }
};
struct PlainEither {
    static double apply(const Step&, double a, double b) noexcept { return platform::either(a, b); }
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
    binary_runs<PlainBoth>(Operation::truth_and),
    binary_runs<PlainEither>(Operation::truth_or),
    binary_runs<Same<Minimum>>(Operation::minimum),
    binary_runs<PlainMaximum>(Operation::maximum),
});

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
const typename Table::value_type* find(const Table& table, Operation operation) noexcept
{
    const auto found = std::ranges::find(table, operation, &Table::value_type::operation);
    return found != table.end() ? &*found : nullptr;
}

} // namespace

const UnaryRuns* find_unary(Operation operation) noexcept
{
    return find(s_unary, operation);
}

const BinaryRuns* find_binary(Operation operation) noexcept
{
    return find(s_binary, operation);
}

const FusedRuns* find_fused(Operation outer, Operation inner) noexcept
{
    static constexpr auto s_arithmetic =
        std::to_array({arithmetic_in<PlainAdd>(Operation::add), arithmetic_in<PlainSubtract>(Operation::subtract),
                       arithmetic_in<PlainMultiply>(Operation::multiply)});
    static constexpr auto s_logic =
        std::to_array({relations_in<PlainBoth>(Operation::truth_and), relations_in<PlainEither>(Operation::truth_or)});
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

} // namespace qmml::interp
