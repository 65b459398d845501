#include "host/command.h"
#include "host/error.h"
#include "host/output_file.h"

#include <qmml/random.h>

#include <memory>
#include <optional>
#include <vector>

namespace qmml::host {
namespace {

struct SelectOptions {
    int count = 0, low = 0, high = 0;
    std::optional<double> seed;
};

void select(const SelectOptions& options)
{
    if (options.low > options.high)
        throw Error("the range ends before it begins");
    const long long range = static_cast<long long>(options.high) - options.low + 1;
    if (options.count < 1 || options.count > range)
        throw Error("there are " + std::to_string(range) + " numbers to choose from, " + std::to_string(options.count) +
                    " are wanted");
    if (options.seed)
        inirnd_(*options.seed);
    std::vector<int> chosen(static_cast<std::size_t>(options.count), options.low);
    // Of a range of one number the library makes a 0.
    if (range > 1 && !PyloSelectUniqueRandomIntegersInRange(options.count, options.low, options.high, chosen.data()))
        throw Error("out of memory");
    std::string text;
    for (const int number : chosen)
        text += std::to_string(number) + '\n';
    write_to_stdout(text);
}

} // namespace

void add_select_command(CLI::App& app)
{
    CLI::App* const command = app.add_subcommand("select", "Choose different whole numbers at random");
    const auto options = std::make_shared<SelectOptions>();
    command->add_option("count", options->count, "How many")->required();
    command->add_option("low", options->low, "The smallest possible")->required();
    command->add_option("high", options->high, "The largest possible")->required();
    command->add_option("--seed", options->seed, "Repeatable choice: 0 to 31999 [the time since the start]")
        ->check(CLI::Range(0.0, 31999.0));
    command->footer("Example:\n  qmml select 6 1 49");
    command->callback([options] { select(*options); });
}

} // namespace qmml::host
