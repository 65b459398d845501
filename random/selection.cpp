#include "random/selection.h"

#include <algorithm>

namespace qmml {
namespace {

constexpr std::uint64_t s_bytes = 0x0101010101010101u;

// The place of the set bit that has rank set bits below it. All bytes are counted at once: the processor's own counting
// instruction is no part of the baseline.
int select_bit(std::uint64_t word, unsigned rank) noexcept
{
    std::uint64_t counts = word - (word >> 1 & 0x55 * s_bytes);
    counts = (counts & 0x33 * s_bytes) + (counts >> 2 & 0x33 * s_bytes);
    const std::uint64_t up_to = ((counts + (counts >> 4)) & 0x0f * s_bytes) * s_bytes; // and with this byte
    // The top bit of each byte that is passed: a sum is at most 64, so no byte borrows from the next.
    const std::uint64_t passed = ((rank * s_bytes | 0x80 * s_bytes) - up_to) & 0x80 * s_bytes;
    const int place = static_cast<int>((passed >> 7) * s_bytes >> 56) * 8;
    unsigned left = rank - static_cast<unsigned>((up_to << 8) >> place & 0xff);
    std::uint64_t byte = word >> place & 0xff;
    for (; left > 0; --left)
        byte &= byte - 1;
    return place + std::countr_zero(byte);
}

} // namespace

RankedSet::RankedSet(std::int64_t n) noexcept
    : m_n(n), m_used((n + 63) / 64),
      m_groups(static_cast<std::int64_t>(std::bit_ceil(static_cast<std::uint64_t>(m_used + s_group) / s_group))),
      m_words(m_used), m_before((m_used / s_group + 1) * s_group), m_counts(m_groups + 1)
{
    if (!*this)
        return;
    for (std::int64_t i = 0; i < m_used; ++i)
        m_words[static_cast<std::size_t>(i)] = all(i);
    for (std::int64_t i = 0; i < static_cast<std::int64_t>(m_before.size()); ++i)
        m_before[static_cast<std::size_t>(i)] =
            static_cast<std::uint16_t>(std::min(i * 64, m_n) - std::min(i / s_group * s_group * 64, m_n));
    for (std::int64_t i = 1; i <= m_groups; ++i) // a node counts the groups since the last multiple of its lowest bit
        m_counts[static_cast<std::size_t>(i)] =
            static_cast<std::uint32_t>(std::min(i * s_group * 64, m_n) - std::min((i - (i & -i)) * s_group * 64, m_n));
}

void RankedSet::take(std::int64_t rank) noexcept
{
    // Down the tree; every node that is not passed holds the integer and loses it. Which ones are passed is chance, so
    // there is no jump.
    std::int64_t group = 0;
    for (std::int64_t step = m_groups / 2; step > 0; step /= 2) {
        std::uint32_t& node = m_counts[static_cast<std::size_t>(group + step)];
        const std::int64_t count = node, passed = -static_cast<std::int64_t>(rank >= count);
        rank -= count & passed;
        group += step & passed;
        node -= static_cast<std::uint32_t>(1 + passed);
    }
    std::uint16_t* const before = &m_before[static_cast<std::size_t>(group * s_group)];
    const auto place = static_cast<std::uint16_t>(rank);
    std::uint16_t behind = 0; // the first word behind the one that holds it
    for (int i = 0; i < s_group; ++i)
        behind = static_cast<std::uint16_t>(behind + (before[i] <= place));
    const unsigned left = static_cast<unsigned>(place) - before[behind - 1];
    for (std::uint16_t i = 0; i < s_group; ++i)
        before[i] = static_cast<std::uint16_t>(before[i] - (i >= behind));
    std::uint64_t& word = m_words[static_cast<std::size_t>(group * s_group + behind - 1)];
    word &= ~(std::uint64_t{1} << select_bit(word, left));
}

HashSet::HashSet(std::int64_t most) noexcept
    : m_shift(64 - static_cast<int>(std::bit_width(static_cast<std::uint64_t>(2 * most)))),
      m_slots(std::int64_t{1} << (64 - m_shift))
{
}

bool HashSet::insert(std::uint32_t value) noexcept
{
    constexpr std::uint64_t golden_ratio = 0x9E3779B97F4A7C15u;
    const std::size_t mask = m_slots.size() - 1;
    for (std::size_t i = static_cast<std::size_t>(value * golden_ratio >> m_shift);; i = (i + 1) & mask) {
        if (m_slots[i] == 0) {
            m_slots[i] = std::uint64_t{value} + 1;
            return true;
        }
        if (m_slots[i] == std::uint64_t{value} + 1)
            return false;
    }
}

} // namespace qmml
