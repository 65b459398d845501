// Powers of ten as binary significands, for scaling by one multiplication.
#pragma once

#include <array>
#include <cstdint>

namespace qmml {

inline constexpr int s_lowest_power = -308, s_highest_power = 322;

// floor(log2(10^power)), for the powers of the table.
constexpr int binary_exponent_of_ten(int power) noexcept
{
    return (power * 217706) >> 16;
}

// The leading 64 bits of 10^power, the first of them set and the rest cut off, at power - s_lowest_power:
// 10^power is in [significand, significand + 1) * 2^(binary_exponent_of_ten(power) - 63).
extern const std::array<std::uint64_t, s_highest_power - s_lowest_power + 1> s_powers_of_ten;

} // namespace qmml
