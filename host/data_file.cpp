#include "host/data_file.h"

#include "host/csv_reader.h"
#include "host/error.h"
#include "host/number_text.h"
#include "host/output_file.h"
#include "host/utf8.h"

#include <algorithm>
#include <cctype>
#include <climits>
#include <cmath>

namespace qmml::host {

bool is_missing_cell(std::string_view cell) noexcept
{
    return cell.empty() || cell == "NA" || cell == ".";
}

static char decimal_of(const DataOptions& options)
{
    if (options.decimal != "." && options.decimal != ",")
        throw Error("--decimal takes \".\" or \",\"");
    return options.decimal[0];
}

static char delimiter_of(const DataOptions& options)
{
    if (options.delimiter.empty())
        return options.decimal == "," ? ';' : ',';
    if (options.delimiter == "tab" || options.delimiter == "\\t")
        return '\t';
    const char c = options.delimiter[0];
    const bool possible = std::ispunct(static_cast<unsigned char>(c)) || c == '\t' || c == ' ';
    if (options.delimiter.size() != 1 || !possible || std::string_view("\"+-").find(c) != std::string_view::npos ||
        options.delimiter == options.decimal)
        throw Error("--delimiter takes one character that is no part of a number, or \"tab\"");
    return c;
}

void add_data_options(CLI::App& command, DataOptions& options)
{
    command.add_option("file", options.file, "CSV file with a header line; \"-\" is standard input")
        ->required()
        ->type_name("FILE");
    command.add_option("--delimiter", options.delimiter,
                       "What separates the fields, or \"tab\" [, or ; where the decimal separator is a comma]");
    command.add_option("--decimal", options.decimal, "Decimal separator of the file [.]");
}

// Nothing where a cell is neither a number nor missing.
static std::vector<double> numbers_of(const std::vector<std::string>& cells, char decimal)
{
    std::vector<double> values;
    values.reserve(cells.size());
    for (const std::string& cell : cells) {
        double value = s_no_value;
        if (!is_missing_cell(cell) && !parse_number(cell, decimal, value))
            return {};
        values.push_back(value);
    }
    return values;
}

DataFile::DataFile(const DataOptions& options) : m_delimiter(delimiter_of(options)), m_decimal(decimal_of(options))
{
    CsvReader reader(options.file, m_delimiter);
    m_name = reader.name();
    CsvRecord record;
    if (!reader.next(record))
        throw Error(m_name + " is empty");
    for (const std::string_view field : record.fields)
        m_columns.push_back({unquoted(field), {}, {}});
    if (record.line_end == "\r\n")
        m_line_end = "\r\n";
    m_texts.push_back((reader.has_byte_order_mark() ? "\xef\xbb\xbf" : "") + std::string(record.text));

    while (reader.next(record)) {
        if (record.text.empty() && m_columns.size() > 1)
            continue;
        if (record.fields.size() != m_columns.size())
            reader.fail_at(record.line, std::to_string(record.fields.size()) + " fields where the header has " +
                                            std::to_string(m_columns.size()));
        for (std::size_t i = 0; i < m_columns.size(); ++i) {
            const std::string text = unquoted(record.fields[i]);
            m_columns[i].cells.emplace_back(trimmed(text));
        }
        m_lines.push_back(record.line);
        m_texts.emplace_back(record.text);
    }
    if (m_lines.empty())
        throw Error(m_name + " has no rows below its header");
    if (m_lines.size() > INT_MAX)
        throw Error(m_name + " has too many rows");
    for (Column& column : m_columns)
        column.values = numbers_of(column.cells, m_decimal);
}

const Column& DataFile::column(const std::string& name) const
{
    const auto has_name = [&](const Column& column) { return column.name == name; };
    const auto found = std::ranges::find_if(m_columns, has_name);
    if (found == m_columns.end()) {
        std::string list;
        for (const Column& column : m_columns)
            list += (list.empty() ? "" : ", ") + column.name;
        throw Error(m_name + " has no column \"" + printable(name) + "\"; it has " + shortened(printable(list), 300));
    }
    if (std::find_if(found + 1, m_columns.end(), has_name) != m_columns.end())
        throw Error(m_name + " has more than one column \"" + printable(name) + '"');
    return *found;
}

const Column& DataFile::numbers(const std::string& name) const
{
    const Column& found = column(name);
    double ignored = 0;
    for (std::size_t i = 0; !found.numeric() && i < found.cells.size(); ++i)
        if (const std::string& cell = found.cells[i]; !is_missing_cell(cell) && !parse_number(cell, m_decimal, ignored))
            throw Error(m_name + ", line " + std::to_string(m_lines[i]) + ": column \"" + printable(name) +
                        "\": " + shortened(printable(cell), 40) + " is not a number");
    return found;
}

void DataFile::write_with(const std::string& output, const std::string& title, const std::vector<double>& values) const
{
    if (std::ranges::any_of(m_columns, [&](const Column& column) { return column.name == title; }))
        throw Error(m_name + " already has a column \"" + printable(title) + "\"; choose another with --name");
    OutputFile file(output);
    file.write(m_texts[0] + m_delimiter + quoted_if_needed(title, m_delimiter) + m_line_end);
    std::string text;
    for (std::size_t i = 0; i < values.size(); ++i) {
        text = m_texts[i + 1];
        text += m_delimiter;
        if (std::isfinite(values[i]))
            append_number(text, values[i], m_decimal);
        text += m_line_end;
        file.write(text);
    }
    file.commit();
}

std::vector<double> present(const std::vector<double>& values)
{
    std::vector<double> result;
    std::ranges::copy_if(values, std::back_inserter(result), [](double value) { return !std::isnan(value); });
    return result;
}

} // namespace qmml::host
