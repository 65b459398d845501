// Missing values at the level of bits, so that no NaN ever raises a fault.
#pragma once

#include <bit>
#include <cstdint>

namespace qmml {

inline constexpr std::uint64_t s_missing_bits = 0x7FF8000000000000u;
inline constexpr std::uint32_t s_missing_float_bits = 0xFFFFFFFFu;
inline constexpr double s_missing = std::bit_cast<double>(s_missing_bits);

constexpr std::uint64_t bits_of(double value) noexcept
{
    return std::bit_cast<std::uint64_t>(value);
}
constexpr std::uint32_t bits_of(float value) noexcept
{
    return std::bit_cast<std::uint32_t>(value);
}

constexpr bool is_nan(double value) noexcept
{
    return (bits_of(value) & 0x7FFFFFFFFFFFFFFFu) > 0x7FF0000000000000u;
}
constexpr bool is_finite(double value) noexcept
{
    return (bits_of(value) & 0x7FF0000000000000u) != 0x7FF0000000000000u;
}

// Keeps the sign and the payload.
constexpr void set_nan(double& value) noexcept
{
    value = std::bit_cast<double>(bits_of(value) | s_missing_bits);
}

} // namespace qmml
