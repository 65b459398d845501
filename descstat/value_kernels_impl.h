// The passes as templates over lanes: L of numbers, K of keys. Included by one source per instruction set, each
// compiled for it: nothing in here may be instantiated for a type that two of those sources share.
#pragma once

#include "core/key_lanes.h"
#include "descstat/value_kernels.h"

namespace qmml::descstat {

// Keys as the sorting engine has them: the lowest is minus infinity, or infinity when they descend, and what is missing
// is above all others.
template <class K>
struct ValueKeys {
    using V = typename K::V;

    template <bool Descending = false>
    static V of(V bits) noexcept
    {
        const V order = K::reflect(bits);
        return K::sum(Descending ? K::exclusive(order, K::set(-1)) : order, K::set(s_offset));
    }

    static constexpr std::int64_t s_offset = -0x000FFFFFFFFFFFFF;
};

template <class K>
struct KeyPasses {
    using V = typename K::V;
    using Keys = ValueKeys<K>;
    static constexpr int width = K::width;

    // Calls body with the bits of each vector. The last one is filled with what is missing.
    template <class Body>
    [[gnu::always_inline]] static inline void for_each(const double* values, std::int64_t count, Body body) noexcept
    {
        std::int64_t i = 0;
        for (; i + width <= count; i += width)
            body(K::load(values + i));
        if (i < count)
            body(K::load_first(values + i, count - i, K::set(-1)));
    }

    static std::int64_t count_present(const double* values, std::int64_t count) noexcept
    {
        std::int64_t present = 0;
        for_each(
            values, count, [&](V bits) __attribute__((always_inline)) { present += K::count(K::present(bits)); });
        return present;
    }

    static std::int64_t copy_present(double* out, const double* values, std::int64_t count) noexcept
    {
        double* end = out;
        for_each(
            values, count, [&](V bits) __attribute__((always_inline)) {
                const unsigned present = K::present(bits);
                K::store(end, K::arrange(bits, K::front(present)));
                end += K::count(present);
            });
        return end - out;
    }

    static std::int64_t split(double* inside, const double* values, std::int64_t count, Interval interval,
                              std::int64_t* below) noexcept
    {
        double ends[width];
        K::store(ends, K::set(0));
        ends[0] = interval.low;
        const V low = lowest_lane(Keys::of(K::load(ends)));
        ends[0] = interval.high;
        const V high = lowest_lane(Keys::of(K::load(ends)));
        double* end = inside;
        std::int64_t lower = 0;
        for_each(
            values, count, [&](V bits) __attribute__((always_inline)) {
                const V key = Keys::of(bits);
                const unsigned under = K::bits(K::less(key, low)), over = K::bits(K::less(high, key));
                const unsigned between = ~(under | over) & ((1u << width) - 1);
                K::store(end, K::arrange(bits, K::front(between)));
                end += K::count(between);
                lower += K::count(under);
            });
        *below += lower;
        return end - inside;
    }

    // Both through the lowest key, so that what is missing never counts.
    template <bool Descending>
    static std::int64_t extreme(const double* values, std::int64_t count, double* result) noexcept
    {
        V lowest = K::set(INT64_MAX);
        std::int64_t present = 0;
        for_each(
            values, count, [&](V bits) __attribute__((always_inline)) {
                const V key = Keys::template of<Descending>(bits);
                lowest = K::lesser(lowest, key);
                present += K::count(K::present(bits));
            });
        V order = K::difference(lowest, K::set(Keys::s_offset));
        if constexpr (Descending)
            order = K::exclusive(order, K::set(-1));
        double lanes[width];
        K::store(lanes, K::reflect(order));
        *result = lanes[0];
        for (int i = 1; i < width; ++i) // a lane without a value holds a NaN
            if (is_nan(*result) || (Descending ? lanes[i] > *result : lanes[i] < *result))
                *result = lanes[i];
        return present;
    }

private:
    // The first lane in every lane.
    static V lowest_lane(V v) noexcept
    {
        double lanes[width];
        K::store(lanes, v);
        return K::set(static_cast<std::int64_t>(bits_of(lanes[0])));
    }
};

// Sums of up to 512 values in 32 columns, which are then added pair by pair: column j and j + 16, then j and j + 8 ...
template <class L>
struct BlockSums {
    using D = typename L::D;
    static constexpr int columns = 32, vectors = columns / L::width;

    // Of term(value); the rest of the last row adds term(fill), which must be 0.
    template <class Term>
    [[gnu::always_inline]] static inline double sum(double* block, int count, double fill, Term term) noexcept
    {
        const int padded = (count + columns - 1) / columns * columns;
        for (int i = count; i < padded; ++i)
            block[i] = fill;
        D sums[vectors];
        for (int j = 0; j < vectors; ++j)
            sums[j] = L::set(0.0);
        for (int i = 0; i < padded; i += columns)
            for (int j = 0; j < vectors; ++j)
                sums[j] = sums[j] + term(L::load(block + i + j * L::width));
        for (int half = vectors / 2; half > 0; half /= 2)
            for (int j = 0; j < half; ++j)
                sums[j] = sums[j] + sums[j + half];
        double lanes[L::width];
        L::store(lanes, sums[0]);
        for (int half = L::width / 2; half > 0; half /= 2)
            for (int j = 0; j < half; ++j)
                lanes[j] += lanes[j + half];
        return lanes[0];
    }

    static double block_sum(double* block, int count) noexcept
    {
        return sum(
            block, count, 0.0, [](D v) __attribute__((always_inline)) { return v; });
    }
    static double block_mean(double* block, int count) noexcept
    {
        const double first = block[0];
        const D origin = L::set(first);
        const double total = sum(
            block, count, first, [=](D v) __attribute__((always_inline)) { return v - origin; });
        return first + total / count;
    }
    static BlockMoments block_moments(double* block, int count) noexcept
    {
        const double mean = block_mean(block, count);
        const D center = L::set(mean);
        return {mean, sum(
                          block, count, mean, [=](D v) __attribute__((always_inline)) {
                              const D deviation = v - center;
                              return deviation * deviation;
                          })};
    }
};

template <class L, class K>
constexpr ValueKernels value_kernels_of() noexcept
{
    using Passes = KeyPasses<K>;
    using Sums = BlockSums<L>;
    return {Passes::count_present,
            Passes::copy_present,
            Sums::block_sum,
            Sums::block_mean,
            Sums::block_moments,
            Passes::template extreme<false>,
            Passes::template extreme<true>,
            Passes::split};
}

} // namespace qmml::descstat
