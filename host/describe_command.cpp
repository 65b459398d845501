#include "host/command.h"
#include "host/csv_reader.h"
#include "host/data_file.h"
#include "host/error.h"
#include "host/number_text.h"
#include "host/output_file.h"
#include "host/picture.h"
#include "host/summary.h"
#include "host/table.h"
#include "host/utf8.h"

#include <qmml/descstat.h>

#include <cmath>
#include <memory>

namespace qmml::host {
namespace {

struct DescribeOptions {
    DataOptions data;
    std::vector<std::string> columns;
    std::string picture;
    int method = 0;
    bool csv = false;
};

std::string csv_of(const std::vector<const Column*>& columns)
{
    std::string text;
    for (const std::string& title : summary_titles())
        text += (text.empty() ? "" : ",") + title;
    text += '\n';
    for (const Column* column : columns) {
        const Summary summary = summarise(column->values);
        text += quoted_if_needed(column->name, ',') + ',' + std::to_string(summary.count) + ',' +
                std::to_string(summary.missing);
        for (const double value : summary_numbers(summary)) {
            text += ',';
            if (std::isfinite(value))
                append_number(text, value, '.');
        }
        text += '\n';
    }
    return text;
}

// A histogram for each column, three in a row.
plot::Svg picture_of(const std::vector<const Column*>& columns)
{
    constexpr std::size_t most = 24;
    if (columns.size() > most)
        throw Error("--svg draws at most 24 columns; choose with --columns");
    const std::size_t across = std::min<std::size_t>(columns.size(), 3), down = (columns.size() + across - 1) / across;
    plot::Svg svg(s_panel.width * static_cast<double>(across), s_panel.height * static_cast<double>(down),
                  "Histograms");
    for (std::size_t i = 0; i < columns.size(); ++i) {
        plot::Box box = s_panel;
        const std::size_t row = i / across, place = i % across;
        box.x = box.width * static_cast<double>(place);
        box.y = box.height * static_cast<double>(row);
        const std::vector<double> sample = present(columns[i]->values);
        draw_histogram(svg, box, printable(columns[i]->name), sample, normal_density(sample));
    }
    return svg;
}

void describe(const DescribeOptions& options)
{
    if (options.method > 0)
        Func_SetPercentileMethod(static_cast<short>(options.method));
    const DataFile file(options.data);
    std::vector<const Column*> columns;
    std::string texts;
    for (const std::string& name : options.columns)
        columns.push_back(&file.numbers(name));
    for (const Column& column : file.columns()) {
        if (!column.numeric())
            texts += (texts.empty() ? "" : ", ") + printable(column.name);
        else if (options.columns.empty())
            columns.push_back(&column);
    }
    if (columns.empty())
        throw Error(file.name() + " has no column of numbers; there are " + shortened(texts, 300));

    if (!options.picture.empty())
        write_picture(options.picture, picture_of(columns));
    if (options.csv)
        return write_to_stdout(csv_of(columns));
    Table table(summary_titles());
    for (const Column* column : columns)
        table.add(summary_cells(printable(column->name), summarise(column->values)));
    write_to_stdout(table.text() +
                    (texts.empty() || !options.columns.empty() ? "" : "\nText columns: " + texts + '\n'));
}

} // namespace

void add_describe_command(CLI::App& app)
{
    CLI::App* const command = app.add_subcommand("describe", "Value statistics of the columns of a CSV file");
    const auto options = std::make_shared<DescribeOptions>();
    add_data_options(*command, options->data);
    command->add_option("--columns", options->columns, "Columns, by name [all that hold numbers]")->delimiter(',');
    command
        ->add_option("--percentile-method", options->method, "Definition of the quartiles and the median, 1 to 6 [3]")
        ->check(CLI::Range(1, 6));
    command->add_flag("--csv", options->csv, "Write CSV with all digits instead of a table");
    command->add_option("--svg", options->picture, "Draw a histogram of each column")->type_name("FILE");
    command->footer("Example:\n  qmml describe airquality.csv --columns Ozone,Wind --svg ozone.svg");
    command->callback([options] { describe(*options); });
}

} // namespace qmml::host
