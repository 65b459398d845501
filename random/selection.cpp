#include "random/selection.h"

#include <algorithm>
#include <utility>

namespace qmml {
namespace {

using Integer = std::uint32_t;

// Draws whose integers stand in ascending order. Those of later draws are counted without the ones of earlier draws.
struct Run {
    const Integer* integers;
    std::int64_t count;

    // With i of the earlier integers below it, is the next of them below the later one too?
    bool passes(std::int64_t i, Integer later) const noexcept { return integers[i] - static_cast<Integer>(i) <= later; }
};

// By bits: which one it is, is chance, and a jump would be a guess.
Integer choose(bool first, Integer a, Integer b) noexcept
{
    return b ^ ((a ^ b) & (0 - static_cast<Integer>(first)));
}

void merge(Run earlier, Run later, Integer* out) noexcept
{
    std::int64_t i = 0, j = 0;
    while (i < earlier.count && j < later.count) {
        const bool first = earlier.passes(i, later.integers[j]);
        *out++ = first ? earlier.integers[i] : later.integers[j] + static_cast<Integer>(i);
        i += first;
        j += !first;
    }
    out = std::copy(earlier.integers + i, earlier.integers + earlier.count, out);
    for (; j < later.count; ++j)
        *out++ = later.integers[j] + static_cast<Integer>(i);
}

// Runs of one length, from both ends at once: neither end runs out of either, and one need not wait for the other.
void merge_even(Run earlier, Run later, Integer* out) noexcept
{
    const std::int64_t n = earlier.count;
    std::int64_t i = 0, j = 0, k = n, l = n;
    Integer* back = out + 2 * n;
    for (std::int64_t step = 0; step < n; ++step) {
        const Integer a = earlier.integers[i], b = later.integers[j];
        const bool first = earlier.passes(i, b);
        *out++ = choose(first, a, b + static_cast<Integer>(i));
        i += first;
        j += !first;
        const Integer c = earlier.integers[k - 1], d = later.integers[l - 1];
        const bool last = !earlier.passes(k - 1, d);
        *--back = choose(last, c, d + static_cast<Integer>(k));
        k -= last;
        l -= !last;
    }
}

// One draw after the other, each put among the integers before it.
void take_few(Integer* places, std::int64_t count) noexcept
{
    for (std::int64_t taken = 1; taken < count; ++taken) {
        const Integer place = places[taken];
        std::int64_t at = taken;
        for (; at > 0 && places[at - 1] - static_cast<Integer>(at - 1) > place; --at)
            places[at] = places[at - 1];
        places[at] = place + static_cast<Integer>(at);
    }
}

} // namespace

void take_places(std::uint32_t* places, std::uint32_t* scratch, std::int64_t count) noexcept
{
    constexpr std::int64_t few = 2;
    for (std::int64_t i = 0; i < count; i += few)
        take_few(places + i, std::min(few, count - i));
    Integer *from = places, *to = scratch;
    for (std::int64_t run = few; run < count; run *= 2) {
        for (std::int64_t i = 0; i < count; i += 2 * run) {
            const Run earlier = {from + i, std::min(run, count - i)};
            const Run later = {earlier.integers + earlier.count, std::min(run, count - i - earlier.count)};
            (later.count == run ? merge_even : merge)(earlier, later, to + i);
        }
        std::swap(from, to);
    }
    if (from != places)
        std::copy_n(from, count, places);
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
