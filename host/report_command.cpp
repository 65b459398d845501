#include "host/command.h"
#include "host/data_file.h"
#include "host/error.h"
#include "host/output_file.h"
#include "host/picture.h"
#include "host/report_page.h"
#include "host/sample_tests.h"
#include "host/smoothing.h"
#include "host/summary.h"
#include "host/utf8.h"

#include <algorithm>
#include <cmath>
#include <filesystem>
#include <functional>
#include <memory>

namespace qmml::host {
namespace {

constexpr double s_level = 0.05;
constexpr std::size_t s_most_columns = 30, s_most_groups = 12, s_most_scatters = 4;

struct ReportOptions {
    DataOptions data;
    std::vector<std::string> columns;
    std::string by, output;
};

using Columns = std::vector<const Column*>;

Columns chosen_columns(const ReportOptions& options, const DataFile& file)
{
    Columns columns;
    for (const std::string& name : options.columns)
        columns.push_back(&file.numbers(name));
    if (columns.empty())
        for (const Column& column : file.columns())
            if (column.numeric())
                columns.push_back(&column);
    if (columns.empty())
        throw Error(file.name() + " has no column of numbers");
    return columns;
}

// The one asked for, else the column with the fewest values that has two to twelve of them, three rows each on the
// average; texts come before numbers.
const Column* grouping_column(const ReportOptions& options, const DataFile& file)
{
    if (!options.by.empty())
        return &file.column(options.by);
    const Column* best = nullptr;
    std::size_t best_count = 0;
    for (const Column& column : file.columns()) {
        const std::size_t count = count_labels(column, s_most_groups);
        if (count < 2 || count > s_most_groups || 3 * count > file.rows())
            continue;
        const bool sooner = !best || (!column.numeric() && best->numeric()) ||
                            (column.numeric() == best->numeric() && count < best_count);
        if (sooner) {
            best = &column;
            best_count = count;
        }
    }
    return best;
}

// What a test says, or why it says nothing.
std::string said(const char* name, const std::function<Finding()>& test)
{
    try {
        return test().line();
    } catch (const Error& error) {
        return std::string(name) + ": " + error.what() + '.';
    }
}

void add_overview(ReportPage& page, const DataFile& file, const Columns& columns)
{
    std::size_t texts = 0;
    std::string names;
    for (const Column& column : file.columns())
        if (!column.numeric()) {
            ++texts;
            names += (names.empty() ? "" : ", ") + printable(column.name);
        }
    page.paragraph(std::to_string(file.rows()) + " rows, " + std::to_string(file.columns().size()) + " columns" +
                   (texts ? "; text columns: " + shortened(names, 300) : "") +
                   ". Empty cells, NA and a single point are missing. Conclusions hold at the 5 % level.");
    page.section("Summary");
    Table table(summary_titles());
    for (const Column* column : columns)
        table.add(summary_cells(printable(column->name), summarise(column->values)));
    page.table(table);
}

void add_distributions(ReportPage& page, const Columns& columns)
{
    page.section("Distributions");
    for (const Column* column : columns) {
        const std::vector<double> sample = present(column->values);
        const std::string name = printable(column->name);
        page.figure(
            {histogram_picture(name, sample, normal_density(sample)), quantile_picture(name, sample)},
            {said(("Shapiro-Wilk test of " + name).c_str(), [&] { return shapiro_test(name, sample, s_level); })});
    }
}

struct Pair {
    const Column* x;
    const Column* y;
    double r;
};

void add_scatter(ReportPage& page, const Pair& pair)
{
    const std::string x_name = printable(pair.x->name), y_name = printable(pair.y->name);
    std::vector<double> x = pair.x->values, y = pair.y->values;
    choose_pairs(x, y);
    Smoothing smoothing;
    smoothing.delta = 0.01 * (x.back() - x.front());
    const plot::Points curve = smooth_curve(x, smoothed(x, y, smoothing));
    page.figure({scatter_picture({y_name + " by " + x_name, x_name, y_name, "lowess"},
                                 points_of(pair.x->values, pair.y->values), curve)},
                {said("Correlation", [&] { return correlation_test(*pair.x, *pair.y, s_level); })});
}

void add_correlations(ReportPage& page, const Columns& columns, const Column* by)
{
    if (columns.size() < 2)
        return;
    page.section("Correlations");
    page.paragraph("Of the rows in which both columns have a value. An asterisk marks what differs from 0.");
    std::vector<std::string> titles = {""};
    for (const Column* column : columns)
        titles.push_back(shortened(printable(column->name), 20));
    Table table(titles);
    std::vector<std::vector<double>> shades;
    std::vector<Pair> pairs;
    for (std::size_t i = 0; i < columns.size(); ++i) {
        std::vector<std::string> cells = {titles[i + 1]};
        std::vector<double> shade = {s_no_value};
        for (std::size_t j = 0; j < columns.size(); ++j) {
            PairStatistics s;
            if (i == j || correlate(columns[i]->values, columns[j]->values, s) != 0) {
                cells.emplace_back(i == j ? "1" : "-");
                shade.push_back(s_no_value);
                continue;
            }
            cells.push_back(rounded(s.r, 3) + (s.p < s_level ? " *" : ""));
            shade.push_back(s.r);
            if (i < j && std::isfinite(s.r) && s.count > 4 && columns[i] != by && columns[j] != by)
                pairs.push_back({columns[i], columns[j], s.r});
        }
        table.add(cells);
        shades.push_back(shade);
    }
    page.shaded_table(table, shades);

    std::ranges::stable_sort(pairs, std::greater<>(), [](const Pair& pair) { return std::fabs(pair.r); });
    pairs.resize(std::min(pairs.size(), s_most_scatters));
    if (!pairs.empty())
        page.section("The strongest correlations");
    for (const Pair& pair : pairs)
        add_scatter(page, pair);
}

void add_groups(ReportPage& page, const Columns& columns, const Column& by)
{
    page.section("By " + printable(by.name));
    for (const Column* column : columns) {
        if (column == &by)
            continue;
        const Groups groups = split(*column, by);
        page.figure({group_picture(groups)},
                    {said("One-way analysis of variance", [&] { return analysis_of_variance(groups, s_level); }),
                     said("Levene's test", [&] { return levene_test(groups, s_level); }),
                     said("Kruskal-Wallis test", [&] { return kruskal_wallis_test(groups, s_level); })});
    }
}

void report(const ReportOptions& options)
{
    const DataFile file(options.data);
    Columns columns = chosen_columns(options, file);
    const std::size_t all = columns.size();
    columns.resize(std::min(all, s_most_columns));
    ReportPage page("Report on " + std::filesystem::path(file.name()).filename().string());
    add_overview(page, file, columns);
    if (all > columns.size())
        page.paragraph("The first " + std::to_string(columns.size()) + " of " + std::to_string(all) +
                       " columns of numbers; --columns chooses others.");
    add_distributions(page, columns);
    const Column* const by = grouping_column(options, file);
    add_correlations(page, columns, by);
    if (by)
        add_groups(page, columns, *by);
    OutputFile out(options.output);
    out.write(page.text());
    out.commit();
}

} // namespace

void add_report_command(CLI::App& app)
{
    CLI::App* const command =
        app.add_subcommand("report", "Statistics, tests and pictures of a CSV file as a web page");
    const auto options = std::make_shared<ReportOptions>();
    add_data_options(*command, options->data);
    command->add_option("--columns", options->columns, "Columns, by name [the first 30 that hold numbers]")
        ->delimiter(',');
    command->add_option("--by", options->by, "Column to group by [one with few different values, if there is any]");
    command->add_option("-o,--output", options->output, "HTML file to write, whole or not at all [standard output]")
        ->type_name("FILE");
    command->footer("Example:\n  qmml report airquality.csv -o report.html");
    command->callback([options] { report(*options); });
}

} // namespace qmml::host
