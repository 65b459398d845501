// Sets of integers 0..n-1 for drawing without replacement.
#pragma once

#include "core/block.h"

#include <bit>
#include <cstdint>

namespace qmml {

template <class Visit>
inline void for_each_bit(std::uint64_t word, std::int64_t base, Visit visit) noexcept
{
    for (; word != 0; word &= word - 1)
        visit(base + std::countr_zero(word));
}

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
            for_each_bit(word, base, visit);
            base += 64;
        }
    }

private:
    Block<std::uint64_t> m_words;
};

// The integers that are left of 0..n-1, found by their rank. A list would move its tail for each one that is taken;
// here the counts of groups stand in a Fenwick tree, and the words of a group are found all at once.
class RankedSet {
public:
    explicit RankedSet(std::int64_t n) noexcept;
    explicit operator bool() const noexcept { return m_words && m_before && m_counts; }

    // Removes the integer that has this many smaller ones left.
    void take(std::int64_t rank) noexcept;

    // Those that have been taken, in ascending order.
    template <class Visit>
    void for_each_taken(Visit visit) const noexcept
    {
        for (std::int64_t i = 0; i < m_used; ++i)
            for_each_bit(all(i) & ~m_words[static_cast<std::size_t>(i)], 64 * i, visit);
    }

private:
    static constexpr std::int64_t s_group = 64; // words

    std::uint64_t all(std::int64_t word) const noexcept
    {
        return word + 1 == m_used && m_n % 64 != 0 ? ~std::uint64_t{0} >> (64 - m_n % 64) : ~std::uint64_t{0};
    }

    std::int64_t m_n, m_used, m_groups; // used words; groups rounded up to a power of two
    Block<std::uint64_t> m_words;
    Block<std::uint16_t> m_before; // how many are left in the words of the group before this one
    Block<std::uint32_t> m_counts; // of groups, from 1
};

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
