// The elementary functions as branch-free kernels over lanes. The error stays below one unit in the last place.
//
// Reductions and polynomials: exp by Cody and Waite, Software Manual for the Elementary Functions (1980), and the
// Taylor series, short enough on [-ln 2 / 2, ln 2 / 2]; log, sin and cos with the minimax coefficients of the freely
// distributable mathematical library (Ng, 1993), whose splitting of pi/2 into 33-bit pieces is used as well.
#pragma once

#include "core/elementary_tables.h"
#include "core/lanes.h"

namespace qmml::elementary {

// Adding it leaves the nearest integer in the low bits of the sum.
inline constexpr double s_round_magic = 0x1.8p52;

// 2^n for an integer -1022 <= n <= 1023 held in a number.
template <class L>
inline typename L::D power_of_two(typename L::D n) noexcept
{
    const auto biased = L::as_bits(n + L::set(s_round_magic)) + L::bits(1023);
    return L::as_number(L::template shift_left<52>(biased));
}

inline constexpr double s_exponential_range = 690.0; // no underflow up to here on the way, on both sides

// exp(x) * 2^-n, and n in units of 1/128 in the low bits of `shifted`.
template <class L>
struct ScaledExponential {
    typename L::D value, rest; // the product with 1 + rest is meant
    typename L::I shifted;
};

template <class L>
inline ScaledExponential<L> scaled_exponential(typename L::D x) noexcept
{
    using D = typename L::D;
    const D shifted = x * L::set(0x1.71547652b82fep+0 * s_table_size) + L::set(s_round_magic);
    const D n = shifted - L::set(s_round_magic);
    // ln 2 / 128 in two parts, the first of 35 bits: its products with n are exact.
    const D r = (x - n * L::set(0x1.62e42fef8p-8)) - n * L::set(0x1.1cf79abc9e3b4p-43);
    const auto index = L::as_bits(shifted) & L::bits(s_table_size - 1);
    const D r2 = r * r;
    const D cubic = L::set(1.0 / 2) + r * L::set(1.0 / 6);
    const D fifth = L::set(1.0 / 24) + r * L::set(1.0 / 120);
    const D table_rest = L::gather(&s_exponentials[0].rest, index + index);
    return {L::gather(&s_exponentials[0].value, index + index), (table_rest + r) + (r2 * cubic + (r2 * r2) * fifth),
            L::as_bits(shifted)};
}

// |x| < s_exponential_range.
template <class L>
inline typename L::D exp_normal_range(typename L::D x) noexcept
{
    const auto e = scaled_exponential<L>(x);
    const auto exponent = L::template shift_left<52>(L::template shift_right<s_table_bits>(e.shifted));
    const auto scale = L::as_number(L::as_bits(e.value) + exponent);
    return scale + scale * e.rest;
}

// Any x: overflows to infinity and underflows through the denormals to 0 by itself.
template <class L>
inline typename L::D exp_full_range(typename L::D x) noexcept
{
    using D = typename L::D;
    x = L::select(L::less(L::set(710.0), x), L::set(710.0), x);
    x = L::select(L::less(x, L::set(-746.0)), L::set(-746.0), x);
    const auto e = scaled_exponential<L>(x);
    // In two steps, so that neither factor leaves the range and a denormal result is rounded once.
    const auto floor = L::template shift_right<s_table_bits>(e.shifted) & L::bits((1u << 13) - 1);
    const D n = L::as_number(L::as_bits(L::set(s_round_magic)) + floor) - L::set(s_round_magic);
    const D centred = L::select(L::less(L::set(4096.0), n), n - L::set(8192.0), n);
    const D half = (centred * L::set(0.5) + L::set(s_round_magic)) - L::set(s_round_magic);
    return (e.value + e.value * e.rest) * power_of_two<L>(half) * power_of_two<L>(centred - half);
}

template <class L>
inline typename L::D exp(typename L::D x) noexcept
{
    const auto magnitude = L::as_number(L::as_bits(x) & L::bits(0x7fffffffffffffffu));
    if (L::any(L::negate(L::less(magnitude, L::set(s_exponential_range))))) [[unlikely]]
        return exp_full_range<L>(x);
    return exp_normal_range<L>(x);
}

// What the biased exponent of x is counted from, put together with 2^52.
inline constexpr double s_exponent_origin = 0x1p52 + 1023.0;

// Normal positive finite x.
template <class L>
inline typename L::D log_normal_range(typename L::D x, typename L::D exponent_origin) noexcept
{
    using D = typename L::D;
    // x = 2^k * m with m from 0x1.6p-1 up to 0x1.6p0.
    const auto shifted = L::as_bits(x) + L::bits(0x3ff0000000000000u - 0x3fe6000000000000u);
    const auto biased = L::template shift_right<52>(shifted);
    const D k = L::as_number(biased | L::bits(0x4330000000000000u)) - exponent_origin;
    const auto mantissa = (L::as_bits(x) + L::bits(0x3ff0000000000000u)) - L::template shift_left<52>(biased);
    const auto index = L::template shift_right<52 - s_table_bits>(shifted) & L::bits(s_table_size - 1);
    const auto entry = L::template shift_left<2>(index);
    // The difference is exact.
    const D difference = L::as_number(mantissa) - L::gather(&s_logarithms[0].centre, entry);
    const D r = difference * L::gather(&s_logarithms[0].reciprocal, entry);

    // ln(1 + r) - r: coefficients -1/2, 1/3 ... -1/8.
    const D r2 = r * r;
    const D p0 = L::set(-1.0 / 2) + r * L::set(1.0 / 3);
    const D p1 = L::set(-1.0 / 4) + r * L::set(1.0 / 5);
    const D p2 = L::set(-1.0 / 6) + r * L::set(1.0 / 7);
    const D rest = r2 * (p0 + r2 * (p1 + r2 * (p2 + r2 * L::set(-1.0 / 8))));

    // ln 2 in a part of 42 bits and the rest: the sum of the high parts is exact.
    const D high = k * L::set(0x1.62e42fefa38p-1) + L::gather(&s_logarithms[0].high, entry);
    const D low = k * L::set(0x1.ef35793c7673p-45) + L::gather(&s_logarithms[0].low, entry);
    return high + (r + (low + rest));
}

// Any x: -infinity at 0, the missing value below.
template <class L>
inline typename L::D log(typename L::D x) noexcept
{
    using D = typename L::D;
    const auto tiny = L::less(x, L::set(0x1p-1022));
    const D scaled = L::select(tiny, x * L::set(0x1p54), x);
    D y = log_normal_range<L>(scaled, L::select(tiny, L::set(s_exponent_origin + 54.0), L::set(s_exponent_origin)));
    const D infinity = L::as_number(L::bits(0x7ff0000000000000u));
    y = L::select(L::less(x, infinity), y, x + x); // infinity, and a NaN made quiet
    y = L::select(L::less_equal(x, L::set(0.0)), L::as_number(L::bits(0xfff0000000000000u)), y);
    return L::select(L::less(x, L::set(0.0)), L::as_number(L::bits(0x7ff8000000000000u)), y);
}

// x less n quarter turns, as a sum of two numbers, and n in the low bits of `quadrant`.
template <class L>
struct Reduced {
    typename L::D angle, tail;
    typename L::I quadrant;
};

inline constexpr double s_reduction_limit = 0x1p19; // n has 20 bits then, and its products with 33-bit pieces are exact

// |x| <= s_reduction_limit.
template <class L>
inline Reduced<L> reduce_quarter_turns(typename L::D x) noexcept
{
    using D = typename L::D;
    const D shifted = x * L::set(0x1.45f306dc9c883p-1) + L::set(s_round_magic);
    const D n = shifted - L::set(s_round_magic);
    const D r0 = x - n * L::set(1.57079632673412561417e+00);
    // Two exact differences: near a multiple of a quarter turn nearly all digits cancel. What is subtracted from is
    // always a multiple of the subtrahend's last place, which makes the short form of the error exact.
    const D w1 = n * L::set(6.07710050630396597660e-11);
    const D r1 = r0 - w1;
    const D lost1 = (r0 - r1) - w1;
    const D w2 = n * L::set(2.02226624871116645580e-21);
    const D r2 = r1 - w2;
    const D lost2 = (r1 - r2) - w2;
    const D rest = (lost1 + lost2) - n * L::set(8.47842766036889956997e-32);
    const D angle = r2 + rest;
    return {angle, (r2 - angle) + rest, L::as_bits(shifted)};
}

template <class L>
inline typename L::D sin_polynomial(typename L::D x, typename L::D tail) noexcept
{
    using D = typename L::D;
    const D z = x * x;
    const D v = z * x;
    const D r = L::set(8.33333333332248946124e-03) +
                z * (L::set(-1.98412698298579493134e-04) +
                     z * (L::set(2.75573137070700676789e-06) +
                          z * (L::set(-2.50507602534068634195e-08) + z * L::set(1.58969099521155010221e-10))));
    return x - ((z * (L::set(0.5) * tail - v * r) - tail) - v * L::set(-1.66666666666666324348e-01));
}

template <class L>
inline typename L::D cos_polynomial(typename L::D x, typename L::D tail) noexcept
{
    using D = typename L::D;
    const D z = x * x;
    const D r =
        z * (L::set(4.16666666666666019037e-02) +
             z * (L::set(-1.38888888888741095749e-03) +
                  z * (L::set(2.48015872894767294178e-05) +
                       z * (L::set(-2.75573143513906633035e-07) +
                            z * (L::set(2.08757232129817482790e-09) + z * L::set(-1.13596475577881948265e-11))))));
    const D half = L::set(0.5) * z;
    const D w = L::set(1.0) - half;
    return w + (((L::set(1.0) - w) - half) + (z * r - x * tail));
}

// The sine of the angle and of `turns` further quarter turns.
template <class L>
inline typename L::D sin_of_reduced(const Reduced<L>& reduced, unsigned turns) noexcept
{
    const auto n = reduced.quadrant + L::bits(turns);
    const auto swap = L::any_bit(n & L::bits(1));
    // Both, for a single number too: which one is needed is a guess on data.
    const auto y =
        L::select(swap, cos_polynomial<L>(reduced.angle, reduced.tail), sin_polynomial<L>(reduced.angle, reduced.tail));
    const auto sign = L::template shift_left<62>(n & L::bits(2));
    return L::as_number(L::as_bits(y) ^ sign);
}

// |x| <= s_reduction_limit.
template <class L>
inline typename L::D sin_moderate(typename L::D x) noexcept
{
    const auto magnitude = L::as_number(L::as_bits(x) & L::bits(0x7fffffffffffffffu));
    // Keeps the sign of a zero and does not touch the denormals.
    return L::select(L::less(magnitude, L::set(0x1p-27)), x, sin_of_reduced<L>(reduce_quarter_turns<L>(x), 0));
}

template <class L>
inline typename L::D cos_moderate(typename L::D x) noexcept
{
    return sin_of_reduced<L>(reduce_quarter_turns<L>(x), 1);
}

} // namespace qmml::elementary
