// What the inlined operations of the formula language do to their operands, over lanes.
#pragma once

#include "core/lanes.h"

namespace qmml::interp {

template <class L>
inline typename L::D truth(typename L::M mask) noexcept
{
    return L::select(mask, L::set(1.0), L::set(0.0));
}

template <class L>
inline typename L::D untruth(typename L::M mask) noexcept
{
    return L::select(mask, L::set(0.0), L::set(1.0));
}

// The operand that is a NaN itself, quieted, where the left one is: a compiler may exchange the operands of a sum or a
// product, and of two NaNs the unit passes the first one on.
template <class L>
inline typename L::D left_nan_first(typename L::D left, typename L::D result) noexcept
{
    const auto quieted = L::as_number(L::as_bits(left) | L::bits(0x0008000000000000u));
    return L::select(L::less_equal(left, left), result, quieted);
}

// Each is a structure, so that tables of kernels can be made from a list of names. The unordered outcomes of the
// relations are part of the language: = < <= hold for a NaN.
struct Add {
    template <class L>
    static typename L::D apply(typename L::D a, typename L::D b) noexcept
    {
        return left_nan_first<L>(a, a + b);
    }
    template <class L>
    static typename L::D apply_to_number(typename L::D a, typename L::D b) noexcept // one of them is no NaN
    {
        return a + b;
    }
};
struct Subtract {
    template <class L>
    static typename L::D apply(typename L::D a, typename L::D b) noexcept
    {
        return a - b;
    }
};
struct Multiply {
    template <class L>
    static typename L::D apply(typename L::D a, typename L::D b) noexcept
    {
        return left_nan_first<L>(a, a * b);
    }
    template <class L>
    static typename L::D apply_to_number(typename L::D a, typename L::D b) noexcept
    {
        return a * b;
    }
};
struct Divide {
    template <class L>
    static typename L::D apply(typename L::D a, typename L::D b) noexcept
    {
        return a / b;
    }
};
struct Equal {
    template <class L>
    static typename L::D apply(typename L::D a, typename L::D b) noexcept
    {
        return untruth<L>(L::differ(a, b));
    }
};
struct NotEqual {
    template <class L>
    static typename L::D apply(typename L::D a, typename L::D b) noexcept
    {
        return truth<L>(L::differ(a, b));
    }
};
struct Greater {
    template <class L>
    static typename L::D apply(typename L::D a, typename L::D b) noexcept
    {
        return truth<L>(L::less(b, a));
    }
};
struct GreaterEqual {
    template <class L>
    static typename L::D apply(typename L::D a, typename L::D b) noexcept
    {
        return truth<L>(L::less_equal(b, a));
    }
};
struct Less {
    template <class L>
    static typename L::D apply(typename L::D a, typename L::D b) noexcept
    {
        return untruth<L>(L::less_equal(b, a));
    }
};
struct LessEqual {
    template <class L>
    static typename L::D apply(typename L::D a, typename L::D b) noexcept
    {
        return untruth<L>(L::less(b, a));
    }
};
// A NaN is false.
struct And {
    template <class L>
    static typename L::D apply(typename L::D a, typename L::D b) noexcept
    {
        return truth<L>(L::both(L::differ(a, L::set(0.0)), L::differ(b, L::set(0.0))));
    }
};
struct Or {
    template <class L>
    static typename L::D apply(typename L::D a, typename L::D b) noexcept
    {
        return truth<L>(L::either(L::differ(a, L::set(0.0)), L::differ(b, L::set(0.0))));
    }
};
// Of truth values: their bits do.
struct TruthAnd {
    template <class L>
    static typename L::D apply(typename L::D a, typename L::D b) noexcept
    {
        return L::as_number(L::as_bits(a) & L::as_bits(b));
    }
};
struct TruthOr {
    template <class L>
    static typename L::D apply(typename L::D a, typename L::D b) noexcept
    {
        return L::as_number(L::as_bits(a) | L::as_bits(b));
    }
};
struct Minimum { // a NaN on either side gives b
    template <class L>
    static typename L::D apply(typename L::D a, typename L::D b) noexcept
    {
        return L::select(L::less_equal(a, b), a, b);
    }
};
struct Maximum { // a NaN on either side gives a
    template <class L>
    static typename L::D apply(typename L::D a, typename L::D b) noexcept
    {
        return L::select(L::less(a, b), b, a);
    }
};

struct Not {
    template <class L>
    static typename L::D apply(typename L::D a) noexcept
    {
        return untruth<L>(L::differ(a, L::set(0.0)));
    }
};
struct Minus {
    template <class L>
    static typename L::D apply(typename L::D a) noexcept
    {
        return L::as_number(L::as_bits(a) ^ L::bits(0x8000000000000000u));
    }
};
struct Absolute {
    template <class L>
    static typename L::D apply(typename L::D a) noexcept
    {
        return L::as_number(L::as_bits(a) & L::bits(0x7fffffffffffffffu));
    }
};
struct Sign {
    template <class L>
    static typename L::D apply(typename L::D a) noexcept
    {
        const auto zero = L::set(0.0);
        return L::select(L::less(zero, a), L::set(1.0), L::select(L::less(a, zero), L::set(-1.0), zero));
    }
};
struct Truncate { // keeps the sign of what becomes zero
    template <class L>
    static typename L::D apply(typename L::D a) noexcept
    {
        const auto magnitude = Absolute::apply<L>(a);
        const auto big = L::set(0x1p52);
        const auto nearest = (magnitude + big) - big;
        const auto below = nearest - truth<L>(L::less(magnitude, nearest));
        const auto sign = L::as_bits(a) & L::bits(0x8000000000000000u);
        return L::select(L::less(magnitude, big), L::as_number(L::as_bits(below) | sign), a);
    }
};
struct SquareRoot {
    template <class L>
    static typename L::D apply(typename L::D a) noexcept
    {
        return L::sqrt(a);
    }
};
struct Square {
    template <class L>
    static typename L::D apply(typename L::D a) noexcept
    {
        return a * a;
    }
};

// The value of a formula: what is infinite or denormal becomes missing. A NaN stays as it is.
template <class L>
inline typename L::D outcome(typename L::D v) noexcept
{
    return L::select(L::irregular(v), L::as_number(L::as_bits(v) | L::bits(0x7ff8000000000000u)), v);
}

} // namespace qmml::interp
