#include "host/command.h"
#include "host/error.h"
#include "host/formula_column.h"
#include "host/platform/process.h"

#include <array>
#include <cctype>
#include <cstdio>
#include <memory>
#include <optional>

namespace qmml::host {

static constexpr std::array<std::string_view, 3> s_xyz = {"X", "Y", "Z"};
static constexpr std::array<std::string_view, 1> s_t = {"T"};

namespace {
struct EvalOptions {
    std::string formula, data, output, name, missing, separators = ".,", delimiter;
    std::optional<std::string> x, y, z, t;
    bool check = false;
};
} // namespace

static Separators parse_separators(const std::string& text)
{
    const auto fits = [](char c) { // no operator, and no part of a number but the decimal separator
        return std::ispunct(static_cast<unsigned char>(c)) &&
               std::string_view("\"^*/+-=<>&|~()").find(c) == std::string_view::npos;
    };
    if (text.size() != 2 || !fits(text[0]) || !fits(text[1]) || text[0] == text[1])
        throw Error("--separators takes two different characters, the decimal and the list separator, as in \",;\"");
    return {text[0], text[1]};
}

static char parse_delimiter(const std::string& text, Separators separators)
{
    if (text.empty())
        return separators.list;
    if (text == "tab" || text == "\\t")
        return '\t';
    const auto byte = static_cast<unsigned char>(text[0]);
    const bool possible = std::ispunct(byte) || text[0] == '\t' || text[0] == ' ';
    if (text.size() != 1 || !possible || std::string_view("\"+-").find(text[0]) != std::string_view::npos)
        throw Error("--delimiter takes one character that is no part of a number, or \"tab\"");
    if (text[0] == separators.decimal)
        throw Error("--delimiter must differ from the decimal separator");
    return text[0];
}

static void evaluate(const EvalOptions& options)
{
    const Separators separators = parse_separators(options.separators);
    ColumnJob job{
        {}, options.name, options.missing, parse_delimiter(options.delimiter, separators), separators.decimal};
    for (const std::optional<std::string>& column : {options.x, options.y, options.z, options.t})
        if (column)
            job.columns.push_back(*column);
    const bool only_check = options.check && options.data.empty();
    std::span<const std::string_view> variables = std::span(s_xyz).first(job.columns.size());
    if (options.t)
        variables = s_t;
    else if (only_check && job.columns.empty())
        variables = s_xyz;

    Formula formula(options.formula, variables, separators);
    if (options.check)
        formula.check_strictly();
    if (only_check)
        return write_to_stdout("The formula is well formed.\n");
    if (options.data.empty())
        throw Error("--data is required (\"-\" reads standard input)");

    // What is wrong with a formula does not depend on the values: one case tells before anything is written.
    const double one = 1;
    const double* const sample[] = {&one, &one, &one};
    double result = 0;
    formula.evaluate(&result, 1, sample);

    if (job.result_name.empty())
        job.result_name = formula.target_name().empty() ? "result" : formula.target_name();
    CsvReader in(options.data, job.delimiter);
    OutputFile out(options.output);
    const ColumnSummary summary = append_column(formula, job, in, out, options.data);
    out.commit();
    if (!options.output.empty() && is_terminal(stderr))
        std::fprintf(stderr, "%llu rows written to %s, %llu results missing\n", summary.rows, options.output.c_str(),
                     summary.missing);
}

void add_eval_command(CLI::App& app)
{
    CLI::App* const eval = app.add_subcommand("eval", "Evaluate a formula over the rows of a CSV file");
    const auto options = std::make_shared<EvalOptions>();
    eval->add_option("formula,--formula", options->formula, "The formula, as in 'V1 = log(x) + 1'")->required();
    eval->add_option("--data", options->data, "CSV file with a header line; \"-\" is standard input")
        ->type_name("FILE");
    auto* const x = eval->add_option("--x", options->x, "Column that X stands for")->type_name("COLUMN");
    auto* const y = eval->add_option("--y", options->y, "Column that Y stands for")->type_name("COLUMN")->needs(x);
    eval->add_option("--z", options->z, "Column that Z stands for")->type_name("COLUMN")->needs(y);
    eval->add_option("--t", options->t, "Column that T stands for; it takes the place of X, Y and Z")
        ->type_name("COLUMN")
        ->excludes(x);
    eval->add_option("-o,--output", options->output, "CSV file to write, whole or not at all [standard output]")
        ->type_name("FILE");
    eval->add_option("--name", options->name, "Name of the new column [the formula's target, or \"result\"]");
    eval->add_option("--na", options->missing, "How a missing result is written [empty]; cells like it are missing");
    eval->add_option("--separators", options->separators,
                     "Decimal and list separator: cells use the first, arguments in the formula the second [.,]");
    eval->add_option("--delimiter", options->delimiter,
                     "What separates the fields of the file, or \"tab\" [the list separator]");
    eval->add_flag("--check", options->check,
                   "Insist on strict syntax first (an evaluation ignores surplus operands); without --data only check");
    eval->footer("Empty cells and NA are missing. Numbers inside a formula always use the decimal point.\n\n"
                 "Examples:\n"
                 "  qmml eval '(x - 32) / 1.8' --data airquality.csv --x Temp --name Celsius\n"
                 "  qmml eval 'V1 = max(x; y)' --data prix.csv --x mai --y juin --separators ',;' -o max.csv\n"
                 "  gzip -dc big.csv.gz | qmml eval 'log(t)' --data - --t time | head\n"
                 "  qmml eval '2 * (x + 1' --check");
    eval->callback([options] { evaluate(*options); });
}

} // namespace qmml::host
