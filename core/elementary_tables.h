// Tables of the exponential and the logarithm. Small enough to stay in the first-level cache.
#pragma once

#include <array>

namespace qmml::elementary {

inline constexpr int s_table_bits = 7;
inline constexpr int s_table_size = 1 << s_table_bits;

// 2^(j/128) is value * (1 + rest).
struct ExponentialEntry {
    double rest;
    double value;
};
extern const std::array<ExponentialEntry, s_table_size> s_exponentials;

// For the j-th part of the mantissas from 0x1.6p-1 on: a number inside it of few bits, its reciprocal, which hardly
// needs rounding, and its logarithm; the high part is a multiple of 2^-42, so that multiples of ln 2 can be added
// without rounding. Next to 1 the number is 1, so that logarithms keep their relative accuracy there.
struct LogarithmEntry {
    double centre;
    double reciprocal;
    double high;
    double low;
};
extern const std::array<LogarithmEntry, s_table_size> s_logarithms;

} // namespace qmml::elementary
