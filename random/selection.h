// Sets of integers 0..n-1 for drawing without replacement.
#pragma once

#include "core/block.h"

#include <bit>
#include <cstdint>

namespace qmml {

// One bit for each integer, all clear at first.
class BitSet {
public:
    explicit BitSet(std::int64_t n) noexcept : m_words((n + 63) / 64) {}
    explicit operator bool() const noexcept { return static_cast<bool>(m_words); }

    // False when it is there already.
    bool insert(std::int64_t i) noexcept
    {
        std::uint64_t& word = m_words[static_cast<std::size_t>(i >> 6)];
        const std::uint64_t bit = std::uint64_t{1} << (i & 63);
        const bool absent = (word & bit) == 0;
        word |= bit;
        return absent;
    }

    // In ascending order.
    template <class Visit>
    void for_each(Visit visit) const noexcept
    {
        std::int64_t base = 0;
        for (const std::uint64_t word : m_words) {
            for (std::uint64_t left = word; left != 0; left &= left - 1)
                visit(base + std::countr_zero(left));
            base += 64;
        }
    }

private:
    Block<std::uint64_t> m_words;
};

// Draws without replacement: places[i] names the integer that has so many smaller ones left after the draws before it.
// The integers, in ascending order, take their place. scratch has room for count numbers.
void take_places(std::uint32_t* places, std::uint32_t* scratch, std::int64_t count) noexcept;

// Distinct integers in a table with open addressing.
class HashSet {
public:
    explicit HashSet(std::int64_t most) noexcept;
    explicit operator bool() const noexcept { return static_cast<bool>(m_slots); }

    bool insert(std::uint32_t value) noexcept; // false when it is there already

private:
    int m_shift;
    Block<std::uint64_t> m_slots; // the value plus 1, 0 where there is none
};

} // namespace qmml
