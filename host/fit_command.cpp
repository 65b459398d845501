#include "host/command.h"
#include "host/data_file.h"
#include "host/error.h"
#include "host/finding.h"
#include "host/output_file.h"
#include "host/picture.h"
#include "host/utf8.h"

#include <memory>

namespace qmml::host {
namespace {

struct FitOptions {
    std::string family, column, picture;
    DataOptions data;
    double location = 0;
};

Fit find_fit(const FitFamily& family, const std::vector<double>& sample, double location, Finding& finding)
{
    Fit result = fit_distribution(family, sample, location);
    finding.figures.emplace_back("n", std::to_string(sample.size()));
    for (std::size_t i = 0; i < family.parameters.size(); ++i)
        finding.figures.emplace_back(family.parameters[i], rounded(result.parameters[i], 10));
    if (sample.size() < 3)
        return result;
    measure_distance(family, sample, result);
    finding.figures.emplace_back("D", rounded(result.distance));
    finding.figures.emplace_back("p", bracket(result.level));
    if (family.name == "normal")
        finding.figures.emplace_back("p (Lilliefors)", bracket(result.lilliefors));
    finding.conclusion = "D is the distance of Kolmogorov and Smirnov; its p does not know that the parameters were "
                         "fitted, and is too large.";
    return result;
}

void fit(const FitOptions& options)
{
    const FitFamily& family = find_fit_family(options.family, true);
    const DataFile file(options.data);
    const std::vector<double> sample = present(file.numbers(options.column).values);
    const std::string name = printable(options.column);
    Finding finding;
    const Fit result = [&] {
        try {
            return find_fit(family, sample, options.location, finding);
        } catch (const Error& error) {
            throw Error(name + ": " + error.what());
        }
    }();
    finding.title = std::string("Maximum likelihood fit of a ") + family.title + " distribution to " + name;
    if (!options.picture.empty())
        write_picture(options.picture, histogram_picture(name, sample, fitted_density(family, result.parameters)));
    write_to_stdout(finding.text());
}

} // namespace

void add_fit_command(CLI::App& app)
{
    CLI::App* const command = app.add_subcommand("fit", "Fit a distribution to a column of a CSV file");
    const auto options = std::make_shared<FitOptions>();
    command->add_option("family", options->family, "beta, expon, extreme, gamma, lognorm, normal, rayleigh or weibull")
        ->required();
    add_data_options(*command, options->data);
    command->add_option("--column", options->column, "The column")->required();
    command->add_option("--location", options->location, "Where a Weibull distribution begins; it is not fitted [0]");
    command->add_option("--svg", options->picture, "Draw a histogram with the density")->type_name("FILE");
    command->footer("Example:\n  qmml fit weibull airquality.csv --column Wind --svg wind.svg");
    command->callback([options] { fit(*options); });
}

} // namespace qmml::host
