// Numbers as text: time per number, after every number has been checked.
#pragma once

#include "harness.h"

#include <cstddef>

namespace qmml::bench {

inline constexpr std::size_t s_text_size = 32;

struct NumberSet {
    std::string name; // behind the workload's name
    std::vector<double> values;
    std::vector<std::string> texts; // as many digits as a table shows: at most 15
};

// Half of the numbers are short decimals as people type them, half have 15 digits and magnitudes from 1e-6 to 1e9; and
// each half alone.
const std::vector<NumberSet>& number_sets();

// Rounded to 15 digits, nothing else.
inline bool reads_back(double written, double value)
{
    return std::abs(written - value) <= 5.0000001e-15 * std::abs(value);
}

void add_matrix_files();

} // namespace qmml::bench
