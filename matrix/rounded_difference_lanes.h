// The rounded difference as a template over lanes.
#pragma once

#include "matrix/rounded_difference.h"

namespace qmml::matrix {

// Halves go up, and a zero keeps its sign. From 2^52 on every number is whole.
template <class L>
typename L::D round_half_up(typename L::D value) noexcept
{
    using D = typename L::D;
    const D whole = L::set(0x1p52);
    const auto sign = L::as_bits(value) & L::bits(0x8000000000000000u);
    const D magnitude = L::as_number(L::as_bits(value) ^ sign);
    const D nearest = L::as_number(L::as_bits((magnitude + whole) - whole) | sign);
    const D rounded = nearest - L::select(L::less_equal(L::set(0.5), value - nearest), L::set(-1.0), L::set(0.0));
    return L::select(L::less(magnitude, whole), rounded, value);
}

template <class L>
struct RoundedShiftLanes {
    using D = typename L::D;

    explicit RoundedShiftLanes(const RoundedShift& shift) noexcept
        : subtrahend(L::set(shift.subtrahend)), lower(L::set(shift.lower)), middle(L::set(shift.middle)),
          upper(L::set(shift.upper)), first(L::set(shift.first)), second(L::set(shift.second)),
          at_zero(L::set(shift.at_zero))
    {
    }

    D operator()(D x) const noexcept
    {
        const D none = L::set(0.0);
        const D magnitude = L::as_number(L::as_bits(x) & L::bits(0x7fffffffffffffffu));
        const D inside = L::select(L::less(magnitude, middle), first, second);
        const D below_upper = L::select(L::less(magnitude, upper), inside, none);
        const D ranged = L::select(L::less_equal(lower, magnitude), below_upper, none);
        const D spacing = L::select(L::less_equal(magnitude, none), at_zero, ranged);
        const D difference = x - subtrahend;
        // Where there is nothing to round, nothing is divided either: that might raise a fault.
        const auto spaced = L::less(none, spacing);
        const D divisor = L::select(spaced, spacing, L::set(1.0));
        const D rounded = round_half_up<L>(L::select(spaced, difference, none) / divisor) * divisor;
        return L::select(spaced, rounded, difference);
    }

    const D subtrahend, lower, middle, upper, first, second, at_zero;
};

} // namespace qmml::matrix
