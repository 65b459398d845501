// A second evaluator of formulas for the tests: reads the text anew for every case, character by character, with two
// stacks of values and operators, and knows nothing of programs, blocks or faults.
#pragma once

#include <string>
#include <vector>

namespace naive {

struct Settings {
    int variables = 3; // -1: T
    char decimal = '.';
    char list = ',';
    int graph_mode = 0, graph_columns = 0, graph = 0;
};

struct Answer {
    bool good = false;
    double value = 0;
    int error = -1; // -1: none
    int position = 0;
};

Answer evaluate(const std::string& formula, const Settings& settings, const std::vector<double>& values);
Answer check(const std::string& formula, const Settings& settings);

} // namespace naive
