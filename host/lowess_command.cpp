#include "host/command.h"
#include "host/data_file.h"
#include "host/error.h"
#include "host/picture.h"
#include "host/smoothing.h"
#include "host/utf8.h"

#include <memory>

namespace qmml::host {
namespace {

struct LowessOptions {
    DataOptions data;
    Smoothing smoothing;
    std::string x, y, name = "lowess", output, picture;
};

void smooth(const LowessOptions& options)
{
    const DataFile file(options.data);
    const Column& x = file.numbers(options.x);
    const Column& y = file.numbers(options.y);
    const std::string x_name = printable(options.x), y_name = printable(options.y);
    const std::vector<double> smooth_y = smoothed(x.values, y.values, options.smoothing);
    if (!options.picture.empty())
        write_picture(options.picture,
                      scatter_picture({y_name + " by " + x_name, x_name, y_name, "lowess"},
                                      points_of(x.values, y.values), smooth_curve(x.values, smooth_y)));
    file.write_with(options.output, options.name, smooth_y);
}

} // namespace

void add_lowess_command(CLI::App& app)
{
    CLI::App* const command = app.add_subcommand("lowess", "Append a smoothed column to a CSV file");
    const auto options = std::make_shared<LowessOptions>();
    add_data_options(*command, options->data);
    command->add_option("--x", options->x, "Column to smooth over; its order does not matter")->required();
    command->add_option("--y", options->y, "Column to smooth")->required();
    command->add_option("--span", options->smoothing.span, "Part of the points in each local fit [2/3]")
        ->check(CLI::Range(1e-5, 1.0));
    command->add_option("--steps", options->smoothing.steps, "Steps that take weight from outliers [3]")
        ->check(CLI::Range(0, 500));
    command->add_option("--delta", options->smoothing.delta, "Interpolate within this distance of a fitted point [0]")
        ->check(CLI::Range(0.0, 1e300));
    command->add_option("--name", options->name, "Name of the new column [lowess]");
    command->add_option("-o,--output", options->output, "CSV file to write, whole or not at all [standard output]")
        ->type_name("FILE");
    command->add_option("--svg", options->picture, "Draw the points and the curve")->type_name("FILE");
    command->footer("At most 4000 points.\n\nExample:\n"
                    "  qmml lowess cars.csv --x speed --y dist --svg cars.svg -o smooth.csv");
    command->callback([options] { smooth(*options); });
}

} // namespace qmml::host
