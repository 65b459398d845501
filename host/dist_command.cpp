#include "host/command.h"
#include "host/error.h"
#include "host/families.h"
#include "host/number_text.h"
#include "host/output_file.h"

#include <array>
#include <cmath>
#include <map>
#include <memory>
#include <string>
#include <vector>

namespace qmml::host {

static constexpr double s_error_value = -3.0e30; // how the library's distributions report a failure

namespace {

using Points = std::vector<std::string>;
struct DistOptions {
    std::string name;
    Points density, lower, upper, quantile;
    std::map<std::string, std::string, std::less<>> parameters; // those given
    bool list = false, csv = false;
};

struct Answer {
    std::string_view function, point;
    double value;
};

} // namespace

static double number_of(const std::string& text, const std::string& option)
{
    double value = 0;
    if (!parse_number(text, '.', value))
        throw Error("--" + option + ": \"" + text + "\" is not a number");
    return value;
}

static std::string signature(const Family& family)
{
    std::string text;
    for (const Parameter& parameter : family.parameters) {
        text += (text.empty() ? "--" : " --") + std::string(parameter.name);
        if (!parameter.required()) {
            text += '=';
            append_number(text, parameter.fallback, '.');
        }
    }
    return text;
}

static std::string list_of_families()
{
    std::string text;
    const auto line = [&](std::string_view name, std::string_view parameters, std::string_view title) {
        const auto column = [&](std::string_view entry, std::size_t width) {
            text += entry;
            text.append(width - entry.size(), ' ');
        };
        column(name, 11);
        column(parameters, 34);
        text += title;
        text += '\n';
    };
    line("name", "parameters [=default]", "distribution");
    for (const Family& family : families())
        line(family.name, signature(family), std::string(family.title) + (family.quantile ? "" : " (no --quantile)"));
    return text;
}

static std::array<double, s_most_parameters> parameters_of(const Family& family, const DistOptions& options)
{
    std::array<double, s_most_parameters> values{};
    for (std::size_t i = 0; i < family.parameters.size(); ++i) {
        const Parameter& parameter = family.parameters[i];
        const auto given = options.parameters.find(parameter.name);
        if (given != options.parameters.end())
            values[i] = number_of(given->second, given->first);
        else if (!parameter.required())
            values[i] = parameter.fallback;
        else
            throw Error(options.name + " needs --" + std::string(parameter.name));
    }
    for (const auto& [name, text] : options.parameters) {
        const auto is_it = [&given = name](const Parameter& parameter) { return parameter.name == given; };
        if (std::ranges::none_of(family.parameters, is_it))
            throw Error(options.name + " has no parameter --" + name + "; it takes " + signature(family));
    }
    return values;
}

static double checked(double value, const DistOptions& options, const char* function, const std::string& point)
{
    if (value == s_error_value || std::isnan(value))
        throw Error(options.name + ", --" + function + ' ' + point + ": parameters outside the domain");
    return value;
}

static std::vector<Answer> answers(const Family& family, const DistOptions& options)
{
    const auto parameters = parameters_of(family, options);
    std::vector<Answer> list;
    const auto ask = [&](const char* function, const Points& points, PointFunction call, bool complement = false) {
        for (const std::string& point : points) {
            const double value = checked(call(number_of(point, function), parameters.data()), options, function, point);
            list.push_back({function, point, complement ? 1 - value : value});
        }
    };
    ask("pdf", options.density, family.density);
    ask("cdf", options.lower, family.lower);
    ask("upper", options.upper, family.lower, true);
    if (!options.quantile.empty() && !family.quantile)
        throw Error(options.name + " is discrete and has no --quantile");
    for (const std::string& p : options.quantile)
        if (const double value = number_of(p, "quantile"); value < 0 || value > 1)
            throw Error("--quantile " + p + ": a probability lies between 0 and 1");
    ask("quantile", options.quantile, family.quantile);
    return list;
}

static void run(const DistOptions& options)
{
    if (options.list)
        return write_to_stdout(list_of_families());
    if (options.name.empty())
        throw Error("dist: the name of a distribution is required (qmml dist --list shows them)");
    const Family* const family = find_family(options.name);
    if (!family)
        throw Error("unknown distribution \"" + options.name + "\" (qmml dist --list shows them)");
    const std::vector<Answer> list = answers(*family, options);
    if (list.empty())
        throw Error("dist: one of --pdf, --cdf, --upper and --quantile is required");
    std::string text = options.csv ? "function,at,value\n" : "";
    for (const Answer& answer : list) {
        if (options.csv)
            text += std::string(answer.function) + ',' + std::string(answer.point) + ',';
        append_number(text, answer.value, '.');
        text += '\n';
    }
    write_to_stdout(text);
}

void add_dist_command(CLI::App& app)
{
    CLI::App* const dist = app.add_subcommand("dist", "Density, tails and quantiles of eighteen distributions");
    const auto options = std::make_shared<DistOptions>();
    dist->add_option("name", options->name, "Distribution, as --list names it");
    dist->add_flag("--list", options->list, "List the distributions with their parameters");
    const auto points = [&](const char* names, Points& where, const char* what, const char* type) {
        dist->add_option(names, where, what)->type_name(type);
    };
    points("--pdf,--density", options->density, "Density, or probability where the distribution is discrete", "X");
    points("--cdf,--lower", options->lower, "Lower tail, P(X <= x)", "X");
    points("--upper", options->upper, "Upper tail, 1 minus the lower one", "X");
    points("--quantile", options->quantile, "The x that has this lower tail", "P");
    dist->add_flag("--csv", options->csv, "Write function, point and value instead of values alone");
    std::map<std::string, std::string> takers; // of each parameter
    for (const Family& family : families())
        for (const Parameter& parameter : family.parameters) {
            std::string& list = takers[std::string(parameter.name)];
            list += (list.empty() ? "" : ", ") + std::string(family.name);
        }
    for (const auto& [parameter, list] : takers) {
        const auto keep = [options, name = parameter](const std::string& text) { options->parameters[name] = text; };
        dist->add_option_function<std::string>("--" + parameter, keep, list)->type_name("NUMBER")->group("Parameters");
    }
    dist->footer("One value to a line: first every --pdf, then --cdf, --upper, --quantile.\n\n"
                 "Examples:\n"
                 "  qmml dist normal --cdf 1.96 --mu 0 --sigma 1\n"
                 "  qmml dist student --quantile 0.025 0.975 --df 10\n"
                 "  qmml dist binom --pdf 0 1 2 3 --p 0.5 --n 3 --csv");
    dist->callback([options] { run(*options); });
}

} // namespace qmml::host
