// Sorting networks on vector registers: the last step of the sorting kernels. Included by one source per instruction
// set, each compiled for it: everything is a template over its lanes.
#pragma once

#include "core/key_lanes.h"

namespace qmml {

// Loops over constants, unrolled by the compiler.
template <int I>
struct Index {
    static constexpr int value = I;
};
template <int First, int Last, class Body>
[[gnu::always_inline]] inline void each(Body body) noexcept
{
    if constexpr (First < Last) {
        body(Index<First>{});
        each<First + 1, Last>(body);
    }
}

// A vector of keys alone. K are the lanes.
template <class K>
struct KeysOnly {
    using Lanes = K;
    struct Row {
        typename K::V key;
    };
    struct Data {
        double* keys;
        Data at(std::int64_t i) const noexcept { return {keys + i}; }
    };
    static constexpr int most_rows = 16;

    static Row load(Data d) noexcept { return {K::load(d.keys)}; }
    static void store(Data d, Row r) noexcept { K::store(d.keys, r.key); }
    static Row load_first(Data d, std::int64_t count, typename K::V fill) noexcept
    {
        return {K::load_first(d.keys, count, fill)};
    }
    static void store_first(Data d, Row r, std::int64_t count) noexcept { K::store_first(d.keys, r.key, count); }
    static Row arrange(Row r, typename K::Arrangement lanes) noexcept { return {K::arrange(r.key, lanes)}; }

    // The lower keys into a.
    static void exchange(Row& a, Row& b) noexcept
    {
        const auto low = K::lesser(a.key, b.key);
        b.key = K::greater(a.key, b.key);
        a.key = low;
    }
    // The lower key of each two lanes of a into the lower lane.
    template <int X>
    static void exchange_lanes(Row& a) noexcept
    {
        const auto other = K::template cross<X>(a.key);
        a.key = K::template weave<X>(K::lesser(a.key, other), K::greater(a.key, other));
    }
    // Lane c of a with lane c ^ X of b, the lower key into the lower lane.
    template <int X>
    static void exchange_across(Row& a, Row& b) noexcept
    {
        const auto other = K::template cross<X>(b.key);
        const auto low = K::lesser(a.key, other), high = K::greater(a.key, other);
        a.key = K::template weave<X>(low, high);
        b.key = K::template cross<X>(K::template weave<X>(high, low));
    }
    template <int R>
    static void transpose(Row* rows) noexcept
    {
        typename K::V keys[K::width];
        each<0, R / K::width>([&](auto block) __attribute__((always_inline)) {
            Row* const first = rows + decltype(block)::value * K::width;
            each<0, K::width>([&](auto i) __attribute__((always_inline)) { keys[i.value] = first[i.value].key; });
            K::transpose(keys);
            each<0, K::width>([&](auto i) __attribute__((always_inline)) { first[i.value].key = keys[i.value]; });
        });
    }
};

// Keys with companions. A pair of equal keys is never exchanged half.
template <class K>
struct KeysWithCompanions {
    using Lanes = K;
    struct Row {
        typename K::V key, companion;
    };
    struct Data {
        double *keys, *companions;
        Data at(std::int64_t i) const noexcept { return {keys + i, companions + i}; }
    };
    static constexpr int most_rows = 8;

    static Row load(Data d) noexcept { return {K::load(d.keys), K::load(d.companions)}; }
    static void store(Data d, Row r) noexcept
    {
        K::store(d.keys, r.key);
        K::store(d.companions, r.companion);
    }
    static Row load_first(Data d, std::int64_t count, typename K::V fill) noexcept
    {
        return {K::load_first(d.keys, count, fill), K::load_first(d.companions, count, fill)};
    }
    static void store_first(Data d, Row r, std::int64_t count) noexcept
    {
        K::store_first(d.keys, r.key, count);
        K::store_first(d.companions, r.companion, count);
    }
    static Row arrange(Row r, typename K::Arrangement lanes) noexcept
    {
        return {K::arrange(r.key, lanes), K::arrange(r.companion, lanes)};
    }

    static void exchange(Row& a, Row& b) noexcept
    {
        const auto swapped = K::less(b.key, a.key);
        const Row low = {K::lesser(a.key, b.key), K::select(swapped, b.companion, a.companion)};
        b = {K::greater(a.key, b.key), K::select(swapped, a.companion, b.companion)};
        a = low;
    }
    template <int X>
    static void exchange_lanes(Row& a) noexcept
    {
        const Row other = cross<X>(a);
        const auto key = K::template weave<X>(K::lesser(a.key, other.key), K::greater(a.key, other.key));
        a = {key, K::select(K::differ(key, a.key), other.companion, a.companion)};
    }
    template <int X>
    static void exchange_across(Row& a, Row& b) noexcept
    {
        const Row other = cross<X>(b);
        const auto low = K::lesser(a.key, other.key), high = K::greater(a.key, other.key);
        const auto key = K::template weave<X>(low, high);
        const auto swapped = K::differ(key, a.key);
        b = cross<X>({K::template weave<X>(high, low), K::select(swapped, a.companion, other.companion)});
        a = {key, K::select(swapped, other.companion, a.companion)};
    }
    template <int R>
    static void transpose(Row* rows) noexcept
    {
        typename K::V keys[K::width], companions[K::width];
        each<0, R / K::width>([&](auto block) __attribute__((always_inline)) {
            Row* const first = rows + decltype(block)::value * K::width;
            each<0, K::width>([&](auto i) __attribute__((always_inline)) {
                keys[i.value] = first[i.value].key;
                companions[i.value] = first[i.value].companion;
            });
            K::transpose(keys);
            K::transpose(companions);
            each<0, K::width>([&](auto i) __attribute__((always_inline)) {
                first[i.value] = {keys[i.value], companions[i.value]};
            });
        });
    }

private:
    template <int X>
    static Row cross(Row r) noexcept
    {
        return {K::template cross<X>(r.key), K::template cross<X>(r.companion)};
    }
};

// The comparators of Batcher's odd-even merge sort of R values: K. E. Batcher, Sorting networks and their applications,
// AFIPS Spring Joint Computing Conference 32 (1968), 307-314.
template <int R>
struct OddEvenMerge {
    unsigned char low[R * R], high[R * R];
    int count;

    constexpr OddEvenMerge() noexcept : low{}, high{}, count(0)
    {
        for (int sorted = 1; sorted < R; sorted *= 2)
            for (int distance = sorted; distance > 0; distance /= 2)
                for (int first = distance % sorted; first + distance < R; first += 2 * distance)
                    for (int i = first; i < first + distance && i + distance < R; ++i)
                        if (i / (2 * sorted) == (i + distance) / (2 * sorted)) {
                            low[count] = static_cast<unsigned char>(i);
                            high[count++] = static_cast<unsigned char>(i + distance);
                        }
    }
};

// Sorts the columns of R rows, then merges neighbouring columns as bitonic sequences until one is left. Afterwards lane
// c of row r holds what comes in place c * R + r.
template <class E, int R>
struct Network {
    using Row = typename E::Row;
    static constexpr int width = E::Lanes::width;
    static constexpr OddEvenMerge<R> s_columns = {};

    static void sort(Row* rows) noexcept
    {
        each<0, s_columns.count>([&](auto i) __attribute__((always_inline)) {
            E::exchange(rows[s_columns.low[i.value]], rows[s_columns.high[i.value]]);
        });
        merge<2>(rows);
    }

private:
    template <int Columns>
    [[gnu::always_inline]] static inline void merge(Row* rows) noexcept
    {
        if constexpr (Columns <= width) {
            each<0, R / 2>([&](auto i) __attribute__((always_inline)) {
                E::template exchange_across<Columns - 1>(rows[i.value], rows[R - 1 - i.value]);
            });
            halve_columns<Columns / 4>(rows);
            halve_rows<R / 2>(rows);
            merge<2 * Columns>(rows);
        }
    }
    template <int Distance>
    [[gnu::always_inline]] static inline void halve_columns(Row* rows) noexcept
    {
        if constexpr (Distance > 0) {
            each<0, R>([&](auto i)
                           __attribute__((always_inline)) { E::template exchange_lanes<Distance>(rows[i.value]); });
            halve_columns<Distance / 2>(rows);
        }
    }
    template <int Distance>
    [[gnu::always_inline]] static inline void halve_rows(Row* rows) noexcept
    {
        if constexpr (Distance > 0) {
            each<0, R>([&](auto i) __attribute__((always_inline)) {
                if constexpr ((decltype(i)::value & Distance) == 0)
                    E::exchange(rows[i.value], rows[i.value + Distance]);
            });
            halve_rows<Distance / 2>(rows);
        }
    }
};

} // namespace qmml
