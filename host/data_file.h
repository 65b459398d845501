// A CSV file with a header line, whole in memory, as the statistics read it.
#pragma once

#include <CLI/CLI.hpp>

#include <cstddef>
#include <limits>
#include <string>
#include <string_view>
#include <vector>

namespace qmml::host {

inline constexpr double s_no_value = std::numeric_limits<double>::quiet_NaN();

struct DataOptions {
    std::string file, delimiter, decimal = ".";
};

void add_data_options(CLI::App& command, DataOptions& options);

struct Column {
    std::string name;               // as in the file
    std::vector<std::string> cells; // without quotes and blanks around them
    std::vector<double> values;     // NaN where missing; empty for a column of texts

    bool numeric() const { return values.size() == cells.size(); }
};

// An empty cell, "NA" and "." are missing.
bool is_missing_cell(std::string_view cell) noexcept;

class DataFile {
public:
    explicit DataFile(const DataOptions& options); // an Error unless there is a row

    std::size_t rows() const noexcept { return m_lines.size(); }
    const std::string& name() const noexcept { return m_name; }
    const std::vector<Column>& columns() const noexcept { return m_columns; }

    const Column& column(const std::string& name) const;  // an Error unless there is exactly one
    const Column& numbers(const std::string& name) const; // and it is numeric

    // The rows as they were read, with one more column behind them.
    void write_with(const std::string& output, const std::string& title, const std::vector<double>& values) const;

private:
    std::string m_name;
    char m_delimiter, m_decimal;
    std::vector<Column> m_columns;
    std::vector<std::size_t> m_lines; // where each row begins
    std::vector<std::string> m_texts; // the header and each row as they stand in the file
    std::string m_line_end = "\n";
};

std::vector<double> present(const std::vector<double>& values); // what is not missing

} // namespace qmml::host
