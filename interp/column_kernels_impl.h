// The block kernels as templates over lanes. Included by one source per instruction set, each compiled for it: nothing
// in here may be instantiated for a type that two of those sources share.
#pragma once

#include "core/elementary_kernels.h"
#include "distrib/normal.h"
#include "interp/column_kernels.h"
#include "interp/operations.h"

namespace qmml::interp {

// What becomes of a result.
struct Intermediate {
    template <class L>
    static void put(double* out, typename L::D v) noexcept
    {
        L::store(out, v);
    }
};
struct Last {
    template <class L>
    static void put(double* out, typename L::D v) noexcept
    {
        L::store(out, outcome<L>(v));
    }
};
struct Streamed {
    template <class L>
    static void put(double* out, typename L::D v) noexcept
    {
        L::stream(out, outcome<L>(v));
    }
};

struct Copy {
    template <class L>
    static typename L::D apply(typename L::D a) noexcept
    {
        return a;
    }
};

template <class L, class Sink>
struct BlockKernels {
    using D = typename L::D;

    template <class Op>
    static void unary(double* out, const double* a, int n) noexcept
    {
        for (int i = 0; i < n; i += L::width)
            Sink::template put<L>(out + i, Op::template apply<L>(L::load(a + i)));
    }

    template <class Op>
    static void both(double* out, const double* a, const double* b, int n) noexcept
    {
        for (int i = 0; i < n; i += L::width)
            Sink::template put<L>(out + i, Op::template apply<L>(L::load(a + i), L::load(b + i)));
    }

    // A constant that is no NaN need not be told from one in every case.
    template <class Op>
    static D apply_with_number(D a, D b) noexcept
    {
        if constexpr (requires { Op::template apply_to_number<L>(a, b); })
            return Op::template apply_to_number<L>(a, b);
        else
            return Op::template apply<L>(a, b);
    }

    template <class Op>
    static void left(double* out, const double* a, const double* b, int n) noexcept
    {
        const D right = L::set(*b);
        if (*b == *b)
            for (int i = 0; i < n; i += L::width)
                Sink::template put<L>(out + i, apply_with_number<Op>(L::load(a + i), right));
        else
            for (int i = 0; i < n; i += L::width)
                Sink::template put<L>(out + i, Op::template apply<L>(L::load(a + i), right));
    }

    template <class Op>
    static void right(double* out, const double* a, const double* b, int n) noexcept
    {
        const D value = L::set(*a);
        if (*a == *a)
            for (int i = 0; i < n; i += L::width)
                Sink::template put<L>(out + i, apply_with_number<Op>(value, L::load(b + i)));
        else
            for (int i = 0; i < n; i += L::width)
                Sink::template put<L>(out + i, Op::template apply<L>(value, L::load(b + i)));
    }

    template <class Op>
    static constexpr BinaryKernels binary = {both<Op>, left<Op>, right<Op>};

    static void exponential(double* out, const double* a, int n) noexcept
    {
        for (int i = 0; i < n; i += L::width)
            Sink::template put<L>(out + i, elementary::exp<L>(L::load(a + i)));
    }

    static void logarithm(double* out, const double* a, int n) noexcept
    {
        for (int i = 0; i < n; i += L::width)
            Sink::template put<L>(out + i, elementary::log<L>(L::load(a + i)));
    }

    // Huge angles, infinities and NaNs are rare: the block is gone over again for them.
    template <D (*Moderate)(D) noexcept, double (*Special)(double) noexcept>
    static void angle(double* out, const double* a, int n) noexcept
    {
        const D limit = L::set(elementary::s_reduction_limit);
        for (int i = 0; i < n; i += L::width) {
            const D x = L::load(a + i);
            const auto special = L::negate(L::less_equal(Absolute::apply<L>(x), limit));
            D y = Moderate(x);
            if (L::any(special)) [[unlikely]] {
                double in[L::width], fixed[L::width];
                L::store(in, x);
                L::store(fixed, y);
                for (int k = 0; k < L::width; ++k)
                    if (!(in[k] <= elementary::s_reduction_limit && in[k] >= -elementary::s_reduction_limit))
                        fixed[k] = Special(in[k]);
                y = L::load(fixed);
            }
            Sink::template put<L>(out + i, y);
        }
    }

    static void normal(double* out, const double* x, double mu, double sigma, int n) noexcept
    {
        const D m = L::set(mu), s = L::set(sigma);
        for (int i = 0; i < n; i += L::width)
            Sink::template put<L>(out + i, normal_density_lane<L>((L::load(x + i) - m) / s) / s);
    }

    static void lower_normal(double* out, const double* x, double mu, double sigma, int n) noexcept
    {
        const D m = L::set(mu), s = L::set(sigma);
        for (int i = 0; i < n; i += L::width)
            Sink::template put<L>(out + i, normal_lower_lane<L>((L::load(x + i) - m) / s));
    }

    static constexpr OperationKernels table()
    {
        return {
            .add = binary<Add>,
            .subtract = binary<Subtract>,
            .multiply = binary<Multiply>,
            .divide = binary<Divide>,
            .equal = binary<Equal>,
            .not_equal = binary<NotEqual>,
            .greater = binary<Greater>,
            .greater_equal = binary<GreaterEqual>,
            .less = binary<Less>,
            .less_equal = binary<LessEqual>,
            .logical_and = binary<And>,
            .logical_or = binary<Or>,
            .truth_and = binary<TruthAnd>,
            .truth_or = binary<TruthOr>,
            .minimum = binary<Minimum>,
            .maximum = binary<Maximum>,
            .logical_not = unary<Not>,
            .minus = unary<Minus>,
            .absolute = unary<Absolute>,
            .sign = unary<Sign>,
            .truncate = unary<Truncate>,
            .square_root = unary<SquareRoot>,
            .square = unary<Square>,
            .exponential = exponential,
            .logarithm = logarithm,
            .sine = angle<elementary::sin_moderate<L>, elementary::sin_special>,
            .cosine = angle<elementary::cos_moderate<L>, elementary::cos_special>,
            .copy = unary<Copy>,
            .normal = normal,
            .lower_normal = lower_normal,
        };
    }
};

template <class L>
constexpr ColumnKernels column_kernels_of()
{
    return {BlockKernels<L, Intermediate>::table(), BlockKernels<L, Last>::table(), BlockKernels<L, Streamed>::table()};
}

} // namespace qmml::interp
