// Sixteen characters at a time, in two words.
#pragma once

#include <array>
#include <bit>
#include <cstddef>
#include <cstdint>
#include <cstring>

namespace qmml {

// The first character stands in the lowest byte, whatever the machine's order.
struct SixteenBytes {
    std::uint64_t low, high;
};

constexpr std::uint64_t repeat(char c) noexcept
{
    return static_cast<unsigned char>(c) * std::uint64_t{0x0101010101010101};
}

// The first n of sixteen; 17 is as good as 16.
constexpr auto make_leading_masks()
{
    std::array<SixteenBytes, 18> masks = {};
    for (std::size_t n = 1; n <= 16; ++n) {
        masks[n] = masks[n - 1];
        (n <= 8 ? masks[n].low : masks[n].high) |= std::uint64_t{0xFF} << (n - 1) % 8 * 8;
    }
    masks[17] = masks[16];
    return masks;
}
inline constexpr auto s_leading_masks = make_leading_masks();

constexpr const SixteenBytes& leading_mask(int n) noexcept
{
    return s_leading_masks[static_cast<std::size_t>(n)];
}

// Towards the end by 0 to 15 places; zeros move in. Spelled so that no compiler branches: n is as good as random.
constexpr SixteenBytes move_back(const SixteenBytes& text, int n) noexcept
{
    const int bits = n % 8 * 8;
    const std::uint64_t low = text.low << bits, high = text.high << bits | text.low >> 1 >> (63 - bits);
    const std::uint64_t by_a_word = -static_cast<std::uint64_t>(n / 8);
    return {low & ~by_a_word, (high & ~by_a_word) | (low & by_a_word)};
}

inline void store_bytes(char* text, std::uint64_t bytes) noexcept
{
    if constexpr (std::endian::native == std::endian::little) {
        std::memcpy(text, &bytes, sizeof bytes);
    } else {
        for (int i = 0; i < 8; ++i)
            text[i] = static_cast<char>(bytes >> (8 * i) & 0xFF);
    }
}

} // namespace qmml
