// The sorting kernels as templates over lanes of keys: quicksort whose partitions and last steps work on whole vectors.
// Included by one source per instruction set, each compiled for it: nothing in here may be instantiated for a type that
// two of those sources share.
#pragma once

#include "core/sort_kernels.h"
#include "core/sort_network.h"

namespace qmml {

template <class E>
class Quicksort {
public:
    using K = typename E::Lanes;
    using V = typename K::V;
    using Row = typename E::Row;
    using Data = typename E::Data;
    using Keys = KeysOnly<K>;

    // Without ranks everything is sorted.
    Quicksort(KeyMap map, const std::int64_t* ranks, int rank_count) noexcept
        : m_flip(K::set(map.flip)), m_offset(K::set(map.offset)), m_ranks(ranks), m_rank_count(rank_count)
    {
    }

    void sort(Data data, std::int64_t count, int sampled_pivots) const noexcept
    {
        // A large array's bits become keys on the way through its first partition.
        std::int64_t middle = 0;
        if (count >= s_large)
            middle = partition<true>(data, count, K::set(sampled_median<16, true>(data.keys, count)));
        else
            make_keys(data.keys, count);
        sort_part(data, 0, middle, sampled_pivots);
        sort_part(data, middle, count, sampled_pivots);
    }

private:
    static constexpr int s_width = K::width;
    static constexpr int s_rows = 4; // partitioned between two decisions on where to read
    static constexpr std::int64_t s_step = std::int64_t{s_rows} * s_width;
    static constexpr std::int64_t s_leaf = std::int64_t{E::most_rows} * s_width;

    static constexpr std::int64_t s_large = 1 << 14;

    V key_of(V bits) const noexcept { return K::sum(K::exclusive(K::reflect(bits), m_flip), m_offset); }
    V bits_of_key(V key) const noexcept { return K::reflect(K::exclusive(K::difference(key, m_offset), m_flip)); }

    void make_keys(double* values, std::int64_t count) const noexcept
    {
        std::int64_t i = 0;
        for (; i + s_width <= count; i += s_width)
            K::store(values + i, key_of(K::load(values + i)));
        K::store_first(values + i, key_of(K::load_first(values + i, count - i, m_flip)), count - i);
    }
    template <bool FromBits>
    Row as_keys(Row row) const noexcept
    {
        if constexpr (FromBits)
            row.key = key_of(row.key);
        return row;
    }

    bool is_wanted(std::int64_t first, std::int64_t last) const noexcept
    {
        if (!m_ranks)
            return true;
        for (int i = 0; i < m_rank_count; ++i)
            if (m_ranks[i] >= first && m_ranks[i] < last)
                return true;
        return false;
    }

    // Once the sampled pivots have been bad too often, the middle of the range of keys is the pivot: 64 halvings leave
    // one key, whatever the data.
    void sort_part(Data data, std::int64_t first, std::int64_t last, int sampled_pivots) const noexcept
    {
        while (first < last && is_wanted(first, last)) {
            const std::int64_t count = last - first;
            const Data part = data.at(first);
            if (count <= s_leaf) {
                sort_leaf_of(part, count);
                return;
            }
            std::int64_t pivot = 0;
            if (sampled_pivots-- > 0)
                pivot = count < 512     ? sampled_median<2>(part.keys, count)
                        : count < 65536 ? sampled_median<8>(part.keys, count)
                                        : sampled_median<16>(part.keys, count);
            else
                pivot = middle_of_range(part.keys, count);
            std::int64_t middle = first + partition(part, count, K::set(pivot));
            if (middle == first) { // the pivot is the lowest key: its equals go first and are done
                middle = pivot == INT64_MAX ? last : first + partition(part, count, K::set(pivot + 1));
                finish(part.keys, middle - first);
                first = middle;
            } else if (middle - first < last - middle) {
                sort_part(data, first, middle, sampled_pivots);
                first = middle;
            } else {
                sort_part(data, middle, last, sampled_pivots);
                last = middle;
            }
        }
    }

    void sort_leaf_of(Data data, std::int64_t count) const noexcept
    {
        if constexpr (E::most_rows > 8)
            if (count > s_leaf / 2)
                return sort_leaf<E::most_rows>(data, count);
        sort_leaf<8>(data, count);
    }

    template <int R>
    void sort_leaf(Data data, std::int64_t count) const noexcept
    {
        Row rows[R];
        const V highest = K::set(INT64_MAX);
        each<0, R>([&](auto i) __attribute__((always_inline)) {
            constexpr int place = decltype(i)::value * s_width;
            rows[i.value] = E::load_first(data.at(place), count - place, highest);
        });
        Network<E, R>::sort(rows);
        each<0, R>([&](auto i) __attribute__((always_inline)) { rows[i.value].key = bits_of_key(rows[i.value].key); });
        E::template transpose<R>(rows);
        each<0, R>([&](auto i) __attribute__((always_inline)) {
            constexpr int row = decltype(i)::value;
            constexpr int place = row % s_width * R + row / s_width * s_width;
            E::store_first(data.at(place), rows[row], count - place);
        });
    }

    void finish(double* keys, std::int64_t count) const noexcept
    {
        std::int64_t i = 0;
        for (; i + s_width <= count; i += s_width)
            K::store(keys + i, bits_of_key(K::load(keys + i)));
        K::store_first(keys + i, bits_of_key(K::load_first(keys + i, count - i, m_flip)), count - i);
    }

    // Median of R vectors that are spread evenly.
    template <int R, bool FromBits = false>
    std::int64_t sampled_median(const double* keys, std::int64_t count) const noexcept
    {
        typename Keys::Row rows[R];
        each<0, R>([&](auto i) __attribute__((always_inline)) {
            const V sample = K::load(keys + (count - s_width) * (2 * i.value + 1) / (2 * R));
            rows[i.value].key = FromBits ? key_of(sample) : sample;
        });
        Network<Keys, R>::sort(rows);
        double median[s_width];
        K::store(median, rows[s_width == 1 ? R / 2 : 0].key);
        return static_cast<std::int64_t>(bits_of(median[s_width / 2]));
    }

    static std::int64_t middle_of_range(const double* keys, std::int64_t count) noexcept
    {
        V low = K::load(keys), high = low;
        for (std::int64_t i = 0; i < count; i += s_width) {
            const V v = K::load(keys + (i + s_width <= count ? i : count - s_width));
            low = K::lesser(low, v);
            high = K::greater(high, v);
        }
        double ends[2][s_width];
        K::store(ends[0], low);
        K::store(ends[1], high);
        auto lowest = static_cast<std::int64_t>(bits_of(ends[0][0])), highest = lowest;
        for (int i = 0; i < s_width; ++i) {
            const auto a = static_cast<std::int64_t>(bits_of(ends[0][i]));
            const auto b = static_cast<std::int64_t>(bits_of(ends[1][i]));
            lowest = a < lowest ? a : lowest;
            highest = b > highest ? b : highest;
        }
        const auto range = static_cast<std::uint64_t>(highest) - static_cast<std::uint64_t>(lowest);
        return static_cast<std::int64_t>(static_cast<std::uint64_t>(lowest) + (range + 1) / 2);
    }

    // What has been read and not yet written leaves room at both ends of the part: each vector, those below the pivot
    // first, is written whole to both ends, and its other lanes are overwritten later. The next vectors are read at the
    // end with less room.
    struct Ends {
        Data data;
        V pivot;
        std::int64_t left, right;

        [[gnu::always_inline]] inline void put(Row row) noexcept
        {
            const unsigned below = K::bits(K::less(row.key, pivot));
            row = E::arrange(row, K::front(below));
            E::store(data.at(left), row);
            E::store(data.at(right - s_width), row);
            const int count = K::count(below);
            left += count;
            right -= s_width - count;
        }
        void put_first(Row row, int there) noexcept
        {
            constexpr unsigned all = 1;
            const unsigned lanes = (all << there) - 1, below = K::bits(K::less(row.key, pivot)) & lanes;
            const int count = K::count(below), others = there - count;
            E::store_first(data.at(left), E::arrange(row, K::front(below)), count);
            E::store_first(data.at(right - others), E::arrange(row, K::front(~below & lanes)), others);
            left += count;
            right -= others;
        }
    };

    // Returns how many are below the pivot; these come first. Needs two steps at least.
    template <bool FromBits = false>
    std::int64_t partition(Data data, std::int64_t count, V pivot) const noexcept
    {
        Row first[s_rows], last[s_rows];
        std::int64_t from = s_step, to = count - s_step;
        each<0, s_rows>([&](auto i) __attribute__((always_inline)) {
            first[i.value] = as_keys<FromBits>(E::load(data.at(i.value * s_width)));
            last[i.value] = as_keys<FromBits>(E::load(data.at(to + i.value * s_width)));
        });
        Ends ends = {data, pivot, 0, count};
        if (const auto odd = static_cast<int>((to - from) % s_width); odd != 0) {
            const Row row = as_keys<FromBits>(E::load_first(data.at(from), odd, pivot));
            from += odd;
            ends.put_first(row, odd);
        }
        while (to - from >= s_step) {
            const std::int64_t read_left = from - ends.left <= ends.right - to ? s_step : 0;
            const Data next = data.at(read_left ? from : to - s_step);
            from += read_left;
            to -= s_step - read_left;
            Row rows[s_rows];
            each<0, s_rows>([&](auto i) __attribute__((always_inline)) {
                rows[i.value] = as_keys<FromBits>(E::load(next.at(i.value * s_width)));
            });
            each<0, s_rows>([&](auto i) __attribute__((always_inline)) { ends.put(rows[i.value]); });
        }
        while (to > from) {
            const std::int64_t read_left = from - ends.left <= ends.right - to ? s_width : 0;
            const Row row = as_keys<FromBits>(E::load(data.at(read_left ? from : to - s_width)));
            from += read_left;
            to -= s_width - read_left;
            ends.put(row);
        }
        each<0, s_rows>([&](auto i) __attribute__((always_inline)) {
            ends.put(first[i.value]);
            ends.put(last[i.value]);
        });
        return ends.left;
    }

    const V m_flip, m_offset;
    const std::int64_t* const m_ranks;
    const int m_rank_count;
};

template <class K>
struct SortEntries {
    static void sort(double* values, std::int64_t count, KeyMap map, int sampled_pivots) noexcept
    {
        Quicksort<KeysOnly<K>>(map, nullptr, 0).sort({values}, count, sampled_pivots);
    }
    static void sort_pairs(double* keys, double* companions, std::int64_t count, KeyMap map,
                           int sampled_pivots) noexcept
    {
        Quicksort<KeysWithCompanions<K>>(map, nullptr, 0).sort({keys, companions}, count, sampled_pivots);
    }
    static void select(double* values, std::int64_t count, KeyMap map, int sampled_pivots, const std::int64_t* ranks,
                       int rank_count) noexcept
    {
        Quicksort<KeysOnly<K>>(map, ranks, rank_count).sort({values}, count, sampled_pivots);
    }
};

template <class K>
constexpr SortKernels sort_kernels_of() noexcept
{
    using Entries = SortEntries<K>;
    return {Entries::sort, Entries::sort_pairs, Entries::select};
}

} // namespace qmml
