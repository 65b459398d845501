#include "host/formula_column.h"

#include "host/error.h"
#include "host/number_text.h"
#include "host/progress.h"

#include <qmml/missing.h>

#include <algorithm>
#include <cmath>

namespace qmml::host {

static constexpr std::size_t s_block_rows = 4096;
static constexpr std::size_t s_block_bytes = std::size_t{4} << 20; // long rows make a shorter block

namespace {

// The columns of the file that the formula reads.
class Cells {
public:
    Cells(const ColumnJob& job, const CsvReader& reader, const CsvRecord& header)
        : m_job(job), m_reader(reader), m_width(header.fields.size())
    {
        std::vector<std::string> names;
        for (std::string_view field : header.fields)
            names.push_back(unquoted(field));
        for (const std::string& wanted : job.columns)
            m_indices.push_back(index_of(wanted, names));
        if (std::ranges::find(names, job.result_name) != names.end())
            throw Error(reader.name() + " already has a column \"" + job.result_name +
                        "\"; choose another with --name");
    }

    void read(const CsvRecord& record, std::size_t row, std::vector<std::vector<double>>& values) const
    {
        if (record.fields.size() != m_width)
            m_reader.fail_at(record.line, std::to_string(record.fields.size()) + " fields where the header has " +
                                              std::to_string(m_width));
        for (std::size_t v = 0; v < m_indices.size(); ++v)
            if (!parse(record.fields[m_indices[v]], values[v][row]))
                m_reader.fail_at(record.line, "column \"" + m_job.columns[v] +
                                                  "\": " + excerpt(record.fields[m_indices[v]]) + " is not a number");
    }

    std::size_t width() const { return m_width; }

private:
    std::size_t index_of(const std::string& wanted, const std::vector<std::string>& names) const
    {
        const auto found = std::ranges::find(names, wanted);
        if (found == names.end()) {
            std::string list;
            for (const std::string& name : names)
                list += (list.empty() ? "" : ", ") + name;
            throw Error(m_reader.name() + " has no column \"" + wanted + "\"; it has " + excerpt(list, 300));
        }
        if (std::find(found + 1, names.end(), wanted) != names.end())
            throw Error(m_reader.name() + " has more than one column \"" + wanted + "\"");
        return static_cast<std::size_t>(found - names.begin());
    }

    bool parse(std::string_view cell, double& value) const
    {
        if (cell.size() >= 2 && cell.front() == '"')
            cell = cell.substr(1, cell.size() - 2);
        cell = trimmed(cell);
        if (cell.empty() || cell == "NA" || cell == m_job.missing) {
            value = CNAN::m_dNAN;
            return true;
        }
        return parse_number(cell, m_job.decimal, value);
    }

    // Whatever the file holds, the message stays one line.
    static std::string excerpt(std::string_view text, std::size_t limit = 40)
    {
        std::size_t length = std::min(limit, text.size());
        while (length > 0 && length < text.size() && (static_cast<unsigned char>(text[length]) & 0xc0) == 0x80)
            --length; // not inside a character
        std::string shown(text.substr(0, length));
        std::ranges::replace_if(
            shown, [](char c) { return static_cast<unsigned char>(c) < ' ' || c == '\x7f'; }, ' ');
        return text.size() > limit ? shown + "..." : shown;
    }

    const ColumnJob& m_job;
    const CsvReader& m_reader;
    std::size_t m_width;
    std::vector<std::size_t> m_indices;
};

// Some thousand rows: their texts one behind the other, and the values that the formula reads.
class Block {
public:
    // The header goes out with the first rows, so that a short file with a fault in it writes nothing at all.
    Block(std::size_t variables, std::string header)
        : m_output(std::move(header)), m_values(variables, std::vector<double>(s_block_rows))
    {
    }

    bool full() const { return m_rows.size() == s_block_rows || m_text.size() >= s_block_bytes; }

    void add(const CsvRecord& record, const Cells& cells)
    {
        cells.read(record, m_rows.size(), m_values);
        m_text += record.text;
        m_rows.push_back({m_text.size(), record.line_end == "\r\n", record.line_end.empty()});
    }

    void write(Formula& formula, const ColumnJob& job, bool carriage_returns, OutputFile& out, ColumnSummary& summary)
    {
        if (!m_rows.empty())
            evaluate(formula);
        std::size_t start = 0;
        for (std::size_t row = 0; row < m_rows.size(); ++row) {
            const Row& shape = m_rows[row];
            m_output.append(m_text, start, shape.end - start);
            start = shape.end;
            m_output += job.delimiter;
            if (std::isnan(m_results[row])) {
                m_output += quoted_if_needed(job.missing, job.delimiter);
                ++summary.missing;
            } else {
                append_number(m_output, m_results[row], job.decimal);
            }
            m_output += shape.carriage_return || (shape.unended && carriage_returns) ? "\r\n" : "\n";
        }
        out.write(m_output);
        summary.rows += m_rows.size();
        m_output.clear();
        m_rows.clear();
        m_text.clear();
    }

private:
    void evaluate(Formula& formula)
    {
        const double* columns[3] = {};
        for (std::size_t v = 0; v < m_values.size(); ++v)
            columns[v] = m_values[v].data();
        m_results.resize(m_rows.size());
        formula.evaluate(m_results.data(), static_cast<int>(m_rows.size()), columns);
    }

    struct Row {
        std::size_t end; // in m_text
        bool carriage_return, unended;
    };
    std::string m_text, m_output;
    std::vector<Row> m_rows;
    std::vector<std::vector<double>> m_values;
    std::vector<double> m_results;
};

} // namespace

ColumnSummary append_column(Formula& formula, const ColumnJob& job, CsvReader& in, OutputFile& out,
                            const std::string& input_path)
{
    CsvRecord record;
    if (!in.next(record) || trimmed(record.text).empty())
        throw Error(in.name() + ": there is no header line");
    if (record.text.find('\0') != record.text.npos)
        throw Error(in.name() + ": not a text file");
    const Cells cells(job, in, record);
    const bool carriage_returns = record.line_end == "\r\n";
    std::string header = in.has_byte_order_mark() ? "\xef\xbb\xbf" : "";
    header += record.text;
    header += job.delimiter + quoted_if_needed(job.result_name, job.delimiter) + (carriage_returns ? "\r\n" : "\n");

    ColumnSummary summary;
    Progress progress(input_path);
    Block block(job.columns.size(), std::move(header));
    std::size_t blank_line = 0; // blank lines are dropped where nothing but such lines follows
    while (in.next(record)) {
        if (cells.width() > 1 && record.text.empty()) {
            blank_line = record.line;
            continue;
        }
        if (blank_line > 0)
            in.fail_at(blank_line, "a blank line between rows");
        block.add(record, cells);
        if (block.full()) {
            block.write(formula, job, carriage_returns, out, summary);
            progress.update(summary.rows, in.bytes_read());
        }
    }
    block.write(formula, job, carriage_returns, out, summary);
    return summary;
}

} // namespace qmml::host
