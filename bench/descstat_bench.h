// Columns of 1e3, 1e6 and 1e7 values: statistics of columns with 1 % missing, sorts of fresh ones without. Short
// columns take turns: the same one again and again would flatter the branch predictor.
#pragma once

#include "harness.h"

#include <functional>
#include <random>
#include <string>
#include <vector>

namespace qmml::bench {

struct Length {
    const char* name;
    int values, statistic_columns, sort_columns;
};
inline constexpr Length s_lengths[] = {{"1e3", 1'000, 64, 256}, {"1e6", 1'000'000, 1, 4}, {"1e7", 10'000'000, 1, 1}};

// Standard normal values, one in a hundred of them missing if so wanted.
std::vector<std::vector<double>> make_columns(int values, int columns, bool with_missing);

// Statistics of the values that are not missing: name_LENGTH/implementation. The first peer's value is the reference
// of the others. Each implementation is a type with a copy per benchmark, so that it may keep its buffers.
using Statistic = std::function<double(const std::vector<double>&)>;
void add_statistic(const std::string& name, const std::string& implementation, const Statistic& statistic);

// Sorts, checked by what std::sort gives.
using Sort = std::function<void(std::vector<double>&)>;
void add_sort(const std::string& implementation, const Sort& sort);

// Replaces values by ranks, or sorts the values and takes the companions along.
using PairSort = std::function<void(std::vector<double>&, std::vector<double>&)>;
void add_rank(const std::string& implementation, const Sort& rank);
void add_dual_sort(const std::string& implementation, const PairSort& sort);

// What a user has to write where the peer knows only how to sort.
struct Pair {
    double key, companion;
    friend bool operator<(const Pair& a, const Pair& b) { return a.key < b.key; }
};
template <class SortPairs>
PairSort dual_by(SortPairs sort)
{
    return [sort, pairs = std::vector<Pair>()](std::vector<double>& keys, std::vector<double>& companions) mutable {
        pairs.resize(keys.size());
        for (std::size_t i = 0; i < keys.size(); ++i)
            pairs[i] = {keys[i], companions[i]};
        sort(pairs);
        for (std::size_t i = 0; i < keys.size(); ++i) {
            keys[i] = pairs[i].key;
            companions[i] = pairs[i].companion;
        }
    };
}
struct Placed {
    double key;
    int place;
    friend bool operator<(const Placed& a, const Placed& b) { return a.key < b.key; }
};
template <class SortPairs>
Sort rank_by(SortPairs sort)
{
    return [sort, pairs = std::vector<Placed>()](std::vector<double>& values) mutable {
        pairs.resize(values.size());
        for (std::size_t i = 0; i < values.size(); ++i)
            pairs[i] = {values[i], static_cast<int>(i)};
        sort(pairs);
        for (std::size_t first = 0, last = 1; first < pairs.size(); first = last++) {
            while (last < pairs.size() && pairs[last].key == pairs[first].key)
                ++last;
            for (std::size_t i = first; i < last; ++i)
                values[static_cast<std::size_t>(pairs[i].place)] = static_cast<double>(first + last + 1) / 2;
        }
    };
}

// The values that are not missing, for peers that do not skip them.
inline std::vector<double>& present(const std::vector<double>& values, std::vector<double>& buffer)
{
    buffer.clear();
    for (const double v : values)
        if (!std::isnan(v))
            buffer.push_back(v);
    return buffer;
}

} // namespace qmml::bench
