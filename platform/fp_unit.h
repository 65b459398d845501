// The floating-point unit as a whole, all of its parts: dear, so for explicit requests only. Guards are elsewhere.
#pragma once

namespace qmml::platform {

// Exception masks in the control word's encoding; a set bit is a masked exception.
namespace control {
inline constexpr unsigned inexact = 0x1, underflow = 0x2, overflow = 0x4, divide_by_zero = 0x8, invalid = 0x10,
                          denormal = 0x80000, masks = 0x8001F;
} // namespace control

unsigned exception_masks() noexcept;

// Replaces the masks selected by which and returns those in force.
unsigned set_exception_masks(unsigned masks, unsigned which) noexcept;

// Rounding, precision, masks and flags as a new thread has them.
void reset_fp_unit() noexcept;

} // namespace qmml::platform
