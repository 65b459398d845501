#include "host/command.h"
#include "host/data_file.h"
#include "host/error.h"

#include <qmml/descstat.h>

#include <cmath>
#include <memory>

namespace qmml::host {
namespace {

struct RankOptions {
    DataOptions data;
    std::string column, ties = "mean", name = "rank", output;
    bool descending = false;
};

void rank(const RankOptions& options)
{
    const DataFile file(options.data);
    const std::vector<double>& values = file.numbers(options.column).values;
    std::vector<double> ranks = present(values);
    const int tie_rule = options.ties == "low" ? 0 : options.ties == "high" ? 1 : 2;
    if (!ranks.empty() &&
        !QelVectorRank(ranks.data(), options.descending ? 0 : 1, tie_rule, static_cast<int>(ranks.size())))
        throw Error("out of memory");
    std::vector<double> column(values.size(), s_no_value);
    for (std::size_t i = 0, next = 0; i < values.size(); ++i)
        if (!std::isnan(values[i]))
            column[i] = ranks[next++];
    file.write_with(options.output, options.name, column);
}

} // namespace

void add_rank_command(CLI::App& app)
{
    CLI::App* const command = app.add_subcommand("rank", "Append the ranks of a column of a CSV file");
    const auto options = std::make_shared<RankOptions>();
    add_data_options(*command, options->data);
    command->add_option("--column", options->column, "The column")->required();
    command
        ->add_option("--ties", options->ties,
                     "What equal values get: the low or the high end of their ranks, or the mean [mean]")
        ->check(CLI::IsMember({"low", "high", "mean"}));
    command->add_flag("--descending", options->descending, "The largest value is the first");
    command->add_option("--name", options->name, "Name of the new column [rank]");
    command->add_option("-o,--output", options->output, "CSV file to write, whole or not at all [standard output]")
        ->type_name("FILE");
    command->callback([options] { rank(*options); });
}

} // namespace qmml::host
