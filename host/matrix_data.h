// Matrices as the command reads, prints and writes them.
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace qmml::host {

// Column by column. Names are empty or there is one for each row or column.
struct Matrix {
    int rows = 0, cols = 0;
    std::vector<double> values;
    std::vector<std::string> row_names = {}, column_names = {};

    Matrix() = default;
    Matrix(int r, int c) : rows(r), cols(c), values(static_cast<std::size_t>(r) * static_cast<std::size_t>(c)) {}

    double at(int row, int col) const
    {
        return values[static_cast<std::size_t>(col) * static_cast<std::size_t>(rows) + static_cast<std::size_t>(row)];
    }
    double* data() { return values.data(); }
    const double* data() const { return values.data(); }
};

struct MatrixInput {
    std::vector<std::string> columns; // of a CSV file, by name; empty: all
    bool complete = false;            // without the rows that have a missing cell
    char delimiter = ',';
};

// A name that ends in ".csv", or "-" for the standard input, is a CSV file with or without a header line, in which an
// empty cell and NA are missing. Anything else is a matrix file.
Matrix read_matrix(const std::string& name, const MatrixInput& options);

// As a matrix file, or as CSV with the names where the name ends in ".csv" or stands for the standard output. The file
// appears whole or not at all.
void write_matrix(const std::string& name, const Matrix& matrix);

// Lines of aligned columns, numbers with that many significant digits.
std::string aligned_text(const Matrix& matrix, int digits);

} // namespace qmml::host
