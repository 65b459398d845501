// What magnitudes a formula's intermediate values can have when its variables are ordinary numbers. From it follows
// that an evaluation cannot raise a fault, so that the floating-point unit need not be asked what its caller has
// unmasked: asking costs more than a short formula.
#pragma once

#include "interp/program.h"

#include <bit>
#include <cstdint>
#include <optional>

namespace qmml::interp {

// A finite number: zero, if it may be, or 2^low <= |v| < 2^high.
struct Range {
    int low = 0, high = 0;
    bool zero = false;
};

// Calm numbers are zero and those of moderate size.
inline constexpr int s_calm_exponent = 64;

inline bool is_calm(double v) noexcept
{
    constexpr auto exponent_bits = [](int e) { return static_cast<std::uint64_t>(1023 + e) << 53; };
    constexpr std::uint64_t first = exponent_bits(-s_calm_exponent), end = exponent_bits(s_calm_exponent);
    const std::uint64_t magnitude = std::bit_cast<std::uint64_t>(v) << 1;
    if (magnitude - first < end - first) [[likely]]
        return true;
    return magnitude == 0;
}

// Of a constant that is zero or a normal number; infinities and denormals have no range.
bool has_range(double v) noexcept;
Range range_of_constant(double v) noexcept;
inline constexpr Range s_calm_range = {-s_calm_exponent, s_calm_exponent, true};
// Beyond it an exponential is not taken without a check.
inline constexpr double s_exponential_limit = 512.0;

// For operands in these ranges, left to right; constants[i] is null where the operand is none. Nothing where a fault is
// possible that the step's own look at its operands does not catch.
std::optional<Range> range_of_result(Operation operation, const Range* operands,
                                     const double* const* constants) noexcept;

} // namespace qmml::interp
