// Chi-square test of a table of frequencies.
#pragma once

namespace qmml::stattest {

struct ChiSquare {
    double chi_square = 0;
    int df = 0;
    double p = 1;
};

bool chi_square_of_table(const double* table, int rows, int columns, ChiSquare& result, int& error) noexcept;

} // namespace qmml::stattest
