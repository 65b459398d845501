// The standard normal tail, over lanes: the exports and the formula columns share it.
#pragma once

#include "core/elementary.h"
#include "core/lanes.h"

namespace qmml {

inline constexpr double s_sqrt_2pi = 2.5066282746310002;
inline constexpr double s_inv_sqrt_2pi = 0.3989422804014327;

// I. D. Hill, Algorithm AS 66, The normal integral, Applied Statistics 22 (1973), 424-427. Both continued fractions are
// multiplied out in exact arithmetic from the published constants, so that each costs one division; every coefficient
// of the far one is positive and nothing cancels. The order of the operations is part of the result's bits.

// P(Z > z) for 0 <= z <= 1.28.
template <class L>
inline typename L::D normal_near_tail(typename L::D z) noexcept
{
    const auto c = [](double v) { return L::set(v); };
    const auto y = z * z * c(0.5);
    const auto y2 = y * y;
    const auto numerator =
        (c(77.08771914411358) + c(7.69176938811487) * y) + (c(2.2892297024568786) + c(-0.00096115806) * y) * y2;
    const auto denominator = (c(193.2302564128308) + c(83.69049289880505) * y) + (c(14.31204326575) + y) * y2;
    return c(0.5) - z * (numerator / denominator);
}

// P(Z > z) for 1.28 < z <= 18.66.
template <class L>
inline typename L::D normal_far_tail(typename L::D z) noexcept
{
    const auto c = [](double v) { return L::set(v); };
    const auto z2 = z * z, z4 = z2 * z2;
    const auto numerator =
        ((c(81.52650921041996) + c(97.95367263537631) * z) + (c(56.108062242013176) + c(18.882631084751488) * z) * z2) +
        (c(3.7579905317611106) + c(0.398942280385) * z) * z4;
    const auto denominator =
        ((c(163.0600983819096) + c(325.9715897509372) * z) + (c(290.8755526779132) + c(150.06159867190763) * z) * z2) +
        ((c(48.33174277298846) + c(9.419885285044) * z) + z2) * z4;
    return elementary::exp<L>(z2 * c(-0.5)) * (numerator / denominator);
}

inline constexpr double s_normal_near = 1.28;
inline constexpr double s_normal_upper_end = 7.0;
inline constexpr double s_normal_lower_end = 18.66;

// P(Z <= z). Raises no serious fault for any z, a quiet NaN included.
template <class L>
inline typename L::D normal_lower_lane(typename L::D z) noexcept
{
    const auto zero = L::set(0), end = L::set(s_normal_lower_end);
    const auto below = L::less(z, zero);
    const auto distance = L::select(below, zero - z, z);
    const auto cut = L::either(L::less(end, distance), L::less(L::set(s_normal_upper_end), z));
    const auto inside = L::select(cut, end, distance);
    const auto near = L::less_equal(inside, L::set(s_normal_near));
    const auto computed = L::select(near, normal_near_tail<L>(inside), normal_far_tail<L>(inside));
    const auto tail = L::select(cut, zero, computed);
    return L::select(below, tail, L::set(1) - tail);
}

// The same bits for one number; only the branch that is needed is computed.
inline double normal_lower(double z) noexcept
{
    const bool below = z < 0;
    const double distance = below ? -z : z;
    if (distance <= s_normal_near) {
        const double tail = normal_near_tail<ScalarLane>(distance);
        return below ? tail : 1 - tail;
    }
    if (z > s_normal_upper_end)
        return 1;
    if (distance > s_normal_lower_end)
        return 0;
    const double tail = normal_far_tail<ScalarLane>(distance);
    return below ? tail : 1 - tail;
}

// Density of the standard normal distribution.
template <class L>
inline typename L::D normal_density_lane(typename L::D z) noexcept
{
    return elementary::exp<L>(L::set(-0.5) * (z * z)) * L::set(s_inv_sqrt_2pi);
}

inline double normal_density(double z) noexcept
{
    return elementary::exp(-0.5 * (z * z)) * s_inv_sqrt_2pi;
}

} // namespace qmml
