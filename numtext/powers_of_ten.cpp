#include "numtext/powers_of_ten.h"

#include <bit>
#include <cstddef>

namespace qmml {
namespace {

// Enough for 10^322, and for 64 bits of 2^1120 / 10^308.
class WideInteger {
public:
    static constexpr int s_top_bit = 35 * 32; // of a number that is one in the last limb

    constexpr explicit WideInteger(std::size_t limb) { m_limbs[limb] = 1; }

    constexpr void multiply_by_ten()
    {
        std::uint64_t carry = 0;
        for (auto& limb : m_limbs) {
            carry += std::uint64_t{limb} * 10;
            limb = static_cast<std::uint32_t>(carry);
            carry >>= 32;
        }
    }
    // Cutting at each step cuts the quotient by the power where it would be cut at once.
    constexpr void divide_by_ten()
    {
        std::uint64_t rest = 0;
        for (auto limb = m_limbs.rbegin(); limb != m_limbs.rend(); ++limb) {
            rest = rest << 32 | *limb;
            *limb = static_cast<std::uint32_t>(rest / 10);
            rest %= 10;
        }
    }

    constexpr int top_bit() const
    {
        return static_cast<int>(top_limb()) * 32 + 31 - std::countl_zero(m_limbs[top_limb()]);
    }
    constexpr std::uint64_t leading_bits() const
    {
        const std::size_t top = top_limb();
        const auto limb = [&](std::size_t below) -> std::uint64_t { return below <= top ? m_limbs[top - below] : 0; };
        const int shift = std::countl_zero(m_limbs[top]);
        return (limb(0) << 32 | limb(1)) << shift | limb(2) >> (32 - shift);
    }

private:
    constexpr std::size_t top_limb() const
    {
        std::size_t i = m_limbs.size() - 1;
        while (m_limbs[i] == 0)
            --i;
        return i;
    }

    std::array<std::uint32_t, 36> m_limbs = {};
};

constexpr auto make_powers()
{
    std::array<std::uint64_t, s_highest_power - s_lowest_power + 1> powers = {};
    const auto keep = [&](int power, const WideInteger& number, int exponent) {
        if (exponent != binary_exponent_of_ten(power))
            throw "the approximation of the exponent is off"; // which ends the compilation
        powers[static_cast<std::size_t>(power - s_lowest_power)] = number.leading_bits();
    };
    WideInteger product(0), quotient(35);
    for (int power = 0; power <= s_highest_power; ++power, product.multiply_by_ten())
        keep(power, product, product.top_bit());
    for (int power = -1; power >= s_lowest_power; --power) {
        quotient.divide_by_ten();
        keep(power, quotient, quotient.top_bit() - WideInteger::s_top_bit);
    }
    return powers;
}

} // namespace

constinit const std::array<std::uint64_t, s_highest_power - s_lowest_power + 1> s_powers_of_ten = make_powers();

} // namespace qmml
