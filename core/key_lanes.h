// Lanes of 64-bit signed keys for the sorting kernels, one policy per instruction set as in core/lanes.h; those of the
// vector units stand in platform/simd. They read and write the bits of arrays of
// double, or of whatever a caller passes for one.
#pragma once

#include "core/missing.h"

#include <cstdint>
#include <cstring>

namespace qmml {

// V is a vector of keys, M a mask of its lanes, Arrangement a permutation of them. The template functions exchange
// lanes and exist for widths above 1 only.
struct ScalarKeys {
    using V = std::int64_t;
    using M = bool;
    using Arrangement = unsigned;
    static constexpr int width = 1;

    static V load(const double* p) noexcept
    {
        V v;
        std::memcpy(&v, p, sizeof v);
        return v;
    }
    static void store(double* p, V v) noexcept { std::memcpy(p, &v, sizeof v); }
    // The first count lanes, any count: the others are taken from fill, or left alone.
    static V load_first(const double* p, std::int64_t count, V fill) noexcept { return count > 0 ? load(p) : fill; }
    static void store_first(double* p, V v, std::int64_t count) noexcept
    {
        if (count > 0)
            store(p, v);
    }

    static V set(std::int64_t v) noexcept { return v; }
    static V sum(V a, V b) noexcept
    {
        return static_cast<V>(static_cast<std::uint64_t>(a) + static_cast<std::uint64_t>(b));
    }
    static V difference(V a, V b) noexcept
    {
        return static_cast<V>(static_cast<std::uint64_t>(a) - static_cast<std::uint64_t>(b));
    }
    static V exclusive(V a, V b) noexcept { return a ^ b; }
    static V reflect(V v) noexcept { return v ^ ((v >> 63) & INT64_MAX); } // negative: all bits but the sign flipped

    // Which lanes hold the bits of a number, an infinity included.
    static unsigned present(V v) noexcept { return (v & INT64_MAX) <= 0x7FF0000000000000; }

    static V lesser(V a, V b) noexcept { return b < a ? b : a; }
    static V greater(V a, V b) noexcept { return b < a ? a : b; }
    static M less(V a, V b) noexcept { return a < b; }
    static M differ(V a, V b) noexcept { return a != b; }
    static V select(M m, V a, V b) noexcept { return m ? a : b; }

    static unsigned bits(M m) noexcept { return m; }
    static int count(unsigned bits) noexcept { return static_cast<int>(bits); }
    // The lanes whose bits are set come first, each kind in its order.
    static Arrangement front(unsigned bits) noexcept { return bits; }
    static V arrange(V v, Arrangement) noexcept { return v; }
    static void transpose(V*) noexcept {}
};

} // namespace qmml
