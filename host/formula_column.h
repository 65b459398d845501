// The command's main work: a formula over the rows of a file.
#pragma once

#include "host/csv_reader.h"
#include "host/formula.h"
#include "host/output_file.h"

#include <string>
#include <vector>

namespace qmml::host {

struct ColumnJob {
    std::vector<std::string> columns; // one for each variable
    std::string result_name;
    std::string missing; // how a missing value is written; read as one too
    char delimiter, decimal;
};
struct ColumnSummary {
    unsigned long long rows = 0, missing = 0;
};

// Copies the rows and appends the results as a last column.
ColumnSummary append_column(Formula& formula, const ColumnJob& job, CsvReader& in, OutputFile& out,
                            const std::string& input_path);

} // namespace qmml::host
