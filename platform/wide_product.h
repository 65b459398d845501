// The whole product of two words: one instruction where the compiler knows how to ask for it.
#pragma once

#include <cstdint>

namespace qmml::platform {

struct WideProduct {
    std::uint64_t high, low;
};

constexpr WideProduct wide_product(std::uint64_t a, std::uint64_t b) noexcept
{
#ifdef __SIZEOF_INT128__
    __extension__ using Wide = unsigned __int128;
    const Wide product = Wide{a} * b;
    return {static_cast<std::uint64_t>(product >> 64), static_cast<std::uint64_t>(product)};
#else
    constexpr std::uint64_t mask = 0xFFFFFFFF;
    const std::uint64_t low = (a & mask) * (b & mask);
    const std::uint64_t cross1 = (a >> 32) * (b & mask) + (low >> 32);
    const std::uint64_t cross2 = (a & mask) * (b >> 32) + (cross1 & mask);
    return {(a >> 32) * (b >> 32) + (cross1 >> 32) + (cross2 >> 32), cross2 << 32 | (low & mask)};
#endif
}

} // namespace qmml::platform
