#include "host/matrix_data.h"

#include "host/csv_reader.h"
#include "host/data_file.h"
#include "host/error.h"
#include "host/number_text.h"
#include "host/output_file.h"
#include "host/table.h"
#include "host/utf8.h"

#include <qmml/core.h>
#include <qmml/matrix.h>
#include <qmml/missing.h>

#include <algorithm>
#include <climits>
#include <cmath>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <utility>

namespace qmml::host {
namespace {

using Row = std::vector<double>;

bool is_csv(const std::string& name)
{
    return name == "-" || name.ends_with(".csv") || name.ends_with(".CSV");
}

bool cell_value(std::string_view field, double& value)
{
    const std::string text = unquoted(field);
    const std::string_view cell = trimmed(text);
    if (is_missing_cell(cell)) {
        value = CNAN::m_dNAN;
        return true;
    }
    return parse_number(cell, '.', value);
}

std::vector<std::size_t> chosen_columns(const std::vector<std::string>& header, const MatrixInput& options,
                                        const CsvReader& reader)
{
    std::vector<std::size_t> chosen;
    for (const std::string& name : options.columns) {
        const auto found = std::ranges::find(header, name);
        if (found == header.end())
            throw Error(reader.name() + ": no column \"" + name + "\"");
        chosen.push_back(static_cast<std::size_t>(found - header.begin()));
    }
    if (chosen.empty())
        for (std::size_t i = 0; i < header.size(); ++i)
            chosen.push_back(i);
    return chosen;
}

Matrix from_rows(const std::vector<Row>& rows, int cols, const std::string& name)
{
    if (rows.size() > INT_MAX)
        throw Error(name + ": too many rows");
    Matrix matrix(static_cast<int>(rows.size()), cols);
    for (std::size_t i = 0; i < rows.size(); ++i)
        for (std::size_t j = 0; j < static_cast<std::size_t>(cols); ++j)
            matrix.values[j * rows.size() + i] = rows[i][j];
    return matrix;
}

Matrix read_csv(const std::string& name, const MatrixInput& options)
{
    CsvReader reader(name, options.delimiter);
    CsvRecord record;
    if (!reader.next(record))
        throw Error(name + ": no rows");

    // The first record is a header unless all of it could be data.
    std::vector<std::string> header;
    double ignored = 0;
    const bool headed =
        !std::ranges::all_of(record.fields, [&](std::string_view field) { return cell_value(field, ignored); });
    const std::size_t width = record.fields.size();
    for (const std::string_view field : record.fields)
        header.push_back(headed ? unquoted(field) : std::string());
    const std::vector<std::size_t> chosen = chosen_columns(header, options, reader);

    std::vector<Row> rows;
    for (bool more = !headed || reader.next(record); more; more = reader.next(record)) {
        if (record.text.empty() && width > 1)
            continue;
        if (record.fields.size() != width)
            reader.fail_at(record.line,
                           std::to_string(record.fields.size()) + " fields instead of " + std::to_string(width));
        Row row;
        bool complete = true;
        for (const std::size_t i : chosen) {
            double value = 0;
            if (!cell_value(record.fields[i], value))
                reader.fail_at(record.line, "\"" + unquoted(record.fields[i]) + "\" is not a number");
            complete = complete && !std::isnan(value);
            row.push_back(value);
        }
        if (complete || !options.complete)
            rows.push_back(std::move(row));
    }
    Matrix matrix = from_rows(rows, static_cast<int>(chosen.size()), name);
    if (headed)
        for (const std::size_t i : chosen)
            matrix.column_names.push_back(header[i]);
    return matrix;
}

// How many fields the library's reader finds in a line.
long count_fields(std::string_view line)
{
    constexpr std::string_view number = "0123456789E+-.e";
    const auto behind = [&](std::string_view characters, std::size_t from) {
        return std::min(line.find_first_not_of(characters, from), line.size());
    };
    long fields = 0;
    for (std::size_t at = 0; at < line.size(); ++fields) {
        at = behind(" ", behind(number, behind(" ", at)));
        if (at < line.size() && number.find(line[at]) == number.npos)
            ++at;
    }
    return fields;
}

// A matrix file does not say how large it is: its rows are its lines that are not empty.
std::pair<int, int> shape_of_file(const std::string& name)
{
    std::ifstream file(name, std::ios::binary);
    if (!file || std::filesystem::is_directory(name))
        throw Error(name + ": cannot be opened");
    constexpr std::size_t longest_line = 8191; // what the library reads of one
    long rows = 0, cols = 0;
    std::string line;
    const auto end_line = [&] {
        rows += !line.empty();
        cols = std::max(cols, count_fields(line));
        line.clear();
    };
    std::vector<char> chunk(1 << 16);
    do {
        file.read(chunk.data(), static_cast<std::streamsize>(chunk.size()));
        for (const char c : std::string_view(chunk.data(), static_cast<std::size_t>(file.gcount())))
            if (c == '\n' || c == '\r')
                end_line();
            else if (line.size() < longest_line)
                line += c;
    } while (file);
    end_line();
    if (rows > INT_MAX || rows * std::max(cols, 1L) > INT_MAX)
        throw Error(name + ": too large");
    return {static_cast<int>(rows), static_cast<int>(cols)};
}

std::string number_text(double value, int digits)
{
    char text[64];
    std::snprintf(text, sizeof text, "%.*g", digits, value);
    return std::isnan(value) ? "." : text;
}

} // namespace

Matrix read_matrix(const std::string& name, const MatrixInput& options)
{
    if (is_csv(name))
        return read_csv(name, options);
    const auto [rows, cols] = shape_of_file(name);
    Matrix matrix(rows, cols);
    if (rows > 0 && QelMatrixRead(name.c_str(), matrix.data(), rows, cols) == 0)
        throw Error(name + ": cannot be read");
    return matrix;
}

void write_matrix(const std::string& name, const Matrix& matrix)
{
    if (is_csv(name)) {
        std::string text;
        for (std::size_t j = 0; j < matrix.column_names.size(); ++j)
            text += (j ? "," : "") + quoted_if_needed(matrix.column_names[j], ',');
        text += matrix.column_names.empty() ? "" : "\n";
        for (int i = 0; i < matrix.rows; ++i) {
            for (int j = 0; j < matrix.cols; ++j) {
                text += j ? "," : "";
                if (const double value = matrix.at(i, j); !std::isnan(value))
                    append_number(text, value, '.');
            }
            text += '\n';
        }
        OutputFile file(name);
        file.write(text);
        return file.commit();
    }
    // The library writes over an existing file's start; here a result replaces it.
    const bool beside = !std::filesystem::exists(name) || std::filesystem::is_regular_file(name);
    const std::string target = beside ? name + ".part" : name;
    if (beside)
        std::filesystem::remove(target);
    if (QelMatrixWrite(target.c_str(), matrix.data(), matrix.rows, matrix.cols) == 0) {
        if (beside)
            std::filesystem::remove(target);
        throw Error(name + (QMMLGetLastError() == 12566 ? ": could not be written completely" : ": cannot be opened"));
    }
    if (beside)
        std::filesystem::rename(target, name);
}

std::string aligned_text(const Matrix& matrix, int digits)
{
    Table table;
    if (!matrix.column_names.empty()) {
        std::vector<std::string> titles = {""};
        for (const std::string& name : matrix.column_names)
            titles.push_back(printable(name));
        table.add(std::move(titles));
    }
    for (int i = 0; i < matrix.rows; ++i) {
        std::vector<std::string> row = {
            matrix.row_names.empty() ? "" : printable(matrix.row_names[static_cast<std::size_t>(i)])};
        for (int j = 0; j < matrix.cols; ++j)
            row.push_back(number_text(matrix.at(i, j), digits));
        table.add(std::move(row));
    }
    if (!matrix.row_names.empty() || matrix.cols == 0)
        return table.text();
    std::string text; // without the gap behind names that are not there
    std::istringstream lines(table.text());
    for (std::string line; std::getline(lines, line);)
        text.append(line, 2).append(1, '\n');
    return text;
}

} // namespace qmml::host
