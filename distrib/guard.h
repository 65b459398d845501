// How an export meets a caller that has unmasked floating-point traps: none of them may be killed by one.
#pragma once

#include "distrib/result.h"
#include "platform/float_guard.h"

#include <bit>
#include <cstdint>

namespace qmml {

// For the body of a guard. A compiler knows nothing of the unit's masks and would move arithmetic past the instructions
// that write them; volatile accesses, which it may not reorder with those, hold the arguments and the result in place.
template <class Body>
inline double in_place(const Body& body) noexcept
{
    const Body* const volatile opaque = &body;
    const volatile double value = (*opaque)();
    return value;
}

// Runs the body; a serious fault that the caller, however many guards away, had unmasked is an error of the function.
template <class Body>
inline double guarded(Body body) noexcept
{
    if (platform::unmasked_faults() == 0) [[likely]]
        return body();
    const platform::FloatGuard guard;
    const double value = in_place(body);
    return guard.faulted(platform::fault::serious) ? distr_fail() : value;
}

// True when the unit as it stands would trap.
inline bool traps_enabled() noexcept
{
    return (~platform::read_unit() & platform::s_unit_masks) != 0;
}

// Runs the body; a fault neither traps nor counts here. Inside an outer guard nothing traps, and the flags are left for
// that guard to judge.
template <class Body>
inline double shielded(Body body) noexcept
{
    if (!traps_enabled()) [[likely]]
        return body();
    const platform::FloatGuard guard;
    return in_place(body);
}

// Asking the unit for its masks costs as much as a short distribution function. So an export tests its arguments first:
// calm ones cannot raise a serious fault in the kernel, which then runs as it is. The tests look at bits, since a
// comparison with a NaN is a fault itself.
inline constexpr double s_calm_limit = 0x1p100;

// Bounds that are powers of two are met by the upper halves of the bits alone, which are cheaper constants.
constexpr std::uint32_t upper_half(double v) noexcept
{
    return static_cast<std::uint32_t>(std::bit_cast<std::uint64_t>(v) >> 32);
}
constexpr bool has_upper_half_only(double v) noexcept
{
    return static_cast<std::uint32_t>(std::bit_cast<std::uint64_t>(v)) == 0;
}

// |v| < limit, zero and denormal numbers included.
inline bool within(double v, double limit) noexcept
{
    if (has_upper_half_only(limit))
        return (upper_half(v) & 0x7fffffffu) < upper_half(limit);
    return std::bit_cast<std::uint64_t>(v) << 1 < std::bit_cast<std::uint64_t>(limit) << 1;
}

template <class... V>
inline bool moderate(V... v) noexcept
{
    return (... && within(v, s_calm_limit));
}

// low <= v < high for positive bounds.
inline bool between(double v, double low, double high) noexcept
{
    if (has_upper_half_only(low) && has_upper_half_only(high))
        return upper_half(v) - upper_half(low) < upper_half(high) - upper_half(low);
    const auto bits = std::bit_cast<std::uint64_t>(v), first = std::bit_cast<std::uint64_t>(low);
    return bits - first < std::bit_cast<std::uint64_t>(high) - first;
}

// A divisor that sends no moderate number out of range.
inline bool moderate_scale(double v) noexcept
{
    return between(v, 1 / s_calm_limit, s_calm_limit);
}

// A probability with room on both sides: its reciprocal is finite, its complement is not 0.
inline bool inner_probability(double p) noexcept
{
    return between(p, 0x1p-1000, 1.0);
}

// How caches know an argument again: zeros have a sign, and a comparison with a stored NaN might be a fault.
inline bool same_bits(double a, double b) noexcept
{
    return std::bit_cast<std::uint64_t>(a) == std::bit_cast<std::uint64_t>(b);
}

template <auto Kernel, class... Args>
[[gnu::noinline, gnu::cold]] double guarded_kernel(Args... args) noexcept
{
    return guarded([=] { return Kernel(args...); });
}

template <auto Kernel, class... Args>
[[gnu::noinline, gnu::cold]] double shielded_kernel(Args... args) noexcept
{
    return shielded([=] { return Kernel(args...); });
}

// For arguments that have been looked at: calm ones go straight to the formula, all others through the whole function,
// which checks them first. Where the formula is all there is, it stands for both.
template <auto Formula, auto Whole = Formula, class... Args>
inline double guarded(bool calm, Args... args) noexcept
{
    if (calm) [[likely]]
        return Formula(args...);
    return guarded_kernel<Whole>(args...);
}

template <auto Formula, auto Whole = Formula, class... Args>
inline double shielded(bool calm, Args... args) noexcept
{
    if (calm) [[likely]]
        return Formula(args...);
    return shielded_kernel<Whole>(args...);
}

} // namespace qmml
