#include "host/command.h"
#include "host/language.h"
#include "host/output_file.h"

#include <algorithm>
#include <string>
#include <utility>
#include <vector>

namespace qmml::host {

using Row = std::pair<std::string, std::string>;
struct Section {
    std::string title;
    std::vector<Row> rows;
};

static std::vector<Row> rows_of(std::span<const Function> functions)
{
    std::vector<Row> rows;
    for (const Function& function : functions) {
        std::string call = function.name + '(';
        for (const std::string& argument : function.arguments)
            call += (call.back() == '(' ? "" : ", ") + argument;
        rows.emplace_back(call + ')', function.meaning);
    }
    return rows;
}

static std::vector<Section> sections()
{
    std::vector<Row> operator_rows, constant_rows;
    for (const Operator& entry : operators())
        operator_rows.emplace_back(entry.spelling, std::to_string(entry.priority) + "  " + std::string(entry.meaning));
    for (const Constant& constant : constants())
        constant_rows.emplace_back(constant.name, constant.meaning);
    return {
        {"Operators, with their priority (6 binds tightest; \"^\" groups from the right)", operator_rows},
        {"Constants, to seven decimals on purpose", constant_rows},
        {"Variables",
         {{"X  Y  Z", "the columns of --x, --y and --z"}, {"T", "the column of --t, in place of X, Y and Z"}}},
        {"Mathematical functions", rows_of(mathematical_functions())},
        {"Distribution functions (\"if\" is the lower tail of the F distribution)", rows_of(distribution_functions())}};
}

static std::string table(const Section& section, std::size_t width)
{
    std::string text = section.title + '\n';
    for (const auto& [left, right] : section.rows)
        text += "  " + left + std::string(width - left.size() + 2, ' ') + right + '\n';
    return text + '\n';
}

static void print_language()
{
    std::size_t width = 0;
    for (const Section& section : sections())
        for (const Row& row : section.rows)
            width = std::max(width, row.first.size());
    std::string text;
    for (const Section& section : sections())
        text += table(section, width);
    text += "Names do not depend on case, the words and, or, not and ifgraph excepted: these are lower case, and\n"
            "a name that begins with one of them is read as that word and a rest.\n"
            "A formula may begin with a name for its result: V1 = x + 1. Behind // or ; stands a comment.\n"
            "With --separators ',;' arguments are separated by \";\", which then begins no comment.\n"
            "Relations with a missing value: =, < and <= hold; <>, > and >= do not.\n"
            "Infinite and undefined results are missing, as are distributions with bad parameters.\n";
    write_to_stdout(text);
}

void add_functions_command(CLI::App& app)
{
    app.add_subcommand("functions", "List the formula language: operators, constants, functions")
        ->callback(print_language);
}

} // namespace qmml::host
