#include "host/command.h"
#include "host/data_file.h"
#include "host/error.h"
#include "host/output_file.h"
#include "host/picture.h"
#include "host/sample_tests.h"
#include "host/smoothing.h"
#include "host/summary_tests.h"
#include "host/utf8.h"

#include <memory>

namespace qmml::host {
namespace {

// One set for all tests; each has the options that it reads.
struct TestOptions {
    DataOptions data;
    std::string value, by, x, y, count, column, family = "normal", picture;
    std::vector<std::string> predictors;
    std::vector<double> parameters;
    double level = 0.05;
    bool through_origin = false;
};
using Options = std::shared_ptr<TestOptions>;

CLI::App& add_test(CLI::App& tests, const char* name, const char* what, const Options& options,
                   void (*run)(const TestOptions& options, const DataFile& file))
{
    CLI::App& test = *tests.add_subcommand(name, what);
    add_data_options(test, options->data);
    add_level_option(test, options->level);
    test.callback([options, run, name] {
        const DataFile file(options->data);
        try {
            run(*options, file);
        } catch (const Error& error) {
            throw Error(std::string(name) + ": " + error.what());
        }
    });
    return test;
}

void report(const Finding& finding)
{
    write_to_stdout(finding.text());
}

template <Finding (*Test)(const Groups&, double)>
void test_groups(const TestOptions& options, const DataFile& file)
{
    const Groups groups = split(file.numbers(options.value), file.column(options.by));
    const Finding finding = Test(groups, options.level);
    if (!options.picture.empty())
        write_picture(options.picture, group_picture(groups));
    report(finding);
}

template <Finding (*Test)(const std::string&, const std::vector<double>&, double)>
void test_normality(const TestOptions& options, const DataFile& file)
{
    const std::vector<double> sample = present(file.numbers(options.column).values);
    const Finding finding = Test(printable(options.column), sample, options.level);
    if (!options.picture.empty())
        write_picture(options.picture, quantile_picture(printable(options.column), sample));
    report(finding);
}

void test_distribution(const TestOptions& options, const DataFile& file)
{
    const std::vector<double> sample = present(file.numbers(options.column).values);
    const FitFamily& family = find_fit_family(options.family, false);
    if (options.parameters.size() != family.parameters.size()) {
        std::string names;
        for (const std::string_view name : family.parameters)
            names += (names.empty() ? "" : ",") + std::string(name);
        throw Error(options.family + " needs --parameters " + names);
    }
    Parameters parameters{};
    std::ranges::copy(options.parameters, parameters.begin());
    const std::string name = printable(options.column);
    const Finding finding = kolmogorov_test(name, sample, family, parameters, options.level);
    if (!options.picture.empty())
        write_picture(options.picture, histogram_picture(name, sample, fitted_density(family, parameters)));
    report(finding);
}

void test_correlation(const TestOptions& options, const DataFile& file)
{
    const Column& x = file.numbers(options.x);
    const Column& y = file.numbers(options.y);
    const Finding finding = correlation_test(x, y, options.level);
    if (!options.picture.empty()) {
        std::vector<double> some_x = x.values, some_y = y.values;
        choose_pairs(some_x, some_y);
        const plot::Points curve = smooth_curve(some_x, smoothed(some_x, some_y, {}));
        const std::string x_name = printable(x.name), y_name = printable(y.name);
        write_picture(options.picture, scatter_picture({y_name + " by " + x_name, x_name, y_name, "lowess"},
                                                       points_of(x.values, y.values), curve));
    }
    report(finding);
}

void test_multiple(const TestOptions& options, const DataFile& file)
{
    const Column& x1 = file.numbers(options.predictors[0]);
    const Column& x2 = file.numbers(options.predictors[1]);
    const Column& y = file.numbers(options.y);
    Plane plane{};
    const Finding finding = multiple_correlation_test(x1, x2, y, options.through_origin, options.level, plane);
    if (!options.picture.empty()) {
        std::vector<double> fitted;
        for (std::size_t i = 0; i < y.values.size(); ++i)
            fitted.push_back(plane.b0 + plane.b1 * x1.values[i] + plane.b2 * x2.values[i]);
        std::vector<double> some_x = fitted, some_y = y.values;
        choose_pairs(some_x, some_y);
        const std::string name = printable(y.name);
        const plot::Points curve = points_of(some_x, some_x); // it ends where the picture does
        write_picture(options.picture,
                      scatter_picture({name + ", observed and fitted", "fitted " + name, name, "fitted = observed"},
                                      points_of(fitted, y.values), curve));
    }
    report(finding);
}

void test_classifications(const TestOptions& options, const DataFile& file)
{
    report(chi_square_test(file.column(options.x), file.column(options.y),
                           options.count.empty() ? nullptr : &file.numbers(options.count), options.level));
}

void add_picture_option(CLI::App& test, const Options& options, const char* what)
{
    test.add_option("--svg", options->picture, what)->type_name("FILE");
}

void add_group_tests(CLI::App& tests, const Options& options)
{
    const auto add = [&](const char* name, const char* what, void (*run)(const TestOptions&, const DataFile&)) {
        CLI::App& test = add_test(tests, name, what, options, run);
        test.add_option("--value", options->value, "Column of the values")->required();
        test.add_option("--by", options->by, "Column that names the group of each value")->required();
        add_picture_option(test, options, "Draw a box plot of each group");
    };
    add("anova", "Do groups have the same mean? One-way analysis of variance", test_groups<analysis_of_variance>);
    add("levene", "Do groups have the same variance? Levene's test", test_groups<levene_test>);
    add("kruskal", "Do groups have the same distribution? Kruskal-Wallis test by ranks",
        test_groups<kruskal_wallis_test>);
}

void add_distribution_tests(CLI::App& tests, const Options& options)
{
    const auto add = [&](const char* name, const char* what, const char* picture,
                         void (*run)(const TestOptions&, const DataFile&)) -> CLI::App& {
        CLI::App& test = add_test(tests, name, what, options, run);
        test.add_option("--column", options->column, "The column")->required();
        add_picture_option(test, options, picture);
        return test;
    };
    add("shapiro", "Is a column normally distributed? Shapiro-Wilk test, 3 to 5000 values",
        "Draw a normal quantile plot", test_normality<shapiro_test>);
    add("lilliefors", "Is a column normally distributed? Kolmogorov-Smirnov with estimated parameters",
        "Draw a normal quantile plot", test_normality<lilliefors_test>);
    CLI::App& ks = add("ks", "Does a column have a given distribution? Kolmogorov-Smirnov test",
                       "Draw a histogram with the density", test_distribution);
    ks.add_option("--family", options->family,
                  "beta, expon, extreme, gamma, geom, laplace, logis, lognorm, normal, poisson, rayleigh or weibull "
                  "[normal]");
    ks.add_option("--parameters", options->parameters, "Of the family, in the order of \"qmml fit\", as in 10,3.5")
        ->delimiter(',')
        ->required();
}

void add_association_tests(CLI::App& tests, const Options& options)
{
    CLI::App& correlation = add_test(
        tests, "correlation", "Do two columns go together? Correlation and regression line", options, test_correlation);
    correlation.add_option("--x", options->x, "A column")->required();
    correlation.add_option("--y", options->y, "Another column")->required();
    add_picture_option(correlation, options, "Draw the points and a lowess curve");

    CLI::App& multiple =
        add_test(tests, "multiple", "Does a column depend on two others? Multiple correlation", options, test_multiple);
    multiple.add_option("--x", options->predictors, "Two columns, as in Wind,Temp")
        ->delimiter(',')
        ->expected(2)
        ->required();
    multiple.add_option("--y", options->y, "The column that may depend on them")->required();
    multiple.add_flag("--through-origin", options->through_origin, "A plane without a constant");
    add_picture_option(multiple, options, "Draw the values against the fitted ones");

    CLI::App& chi2 = add_test(tests, "chi2", "Are two classifications independent? Pearson's chi-square", options,
                              test_classifications);
    chi2.add_option("--x", options->x, "Column of one classification")->required();
    chi2.add_option("--y", options->y, "Column of the other")->required();
    chi2.add_option("--count", options->count, "Column that says how often each row counts [once]");
}

} // namespace

void add_test_command(CLI::App& app)
{
    CLI::App* const tests = app.add_subcommand("test", "Statistical tests on the columns of a CSV file");
    tests->require_subcommand(1);
    const auto options = std::make_shared<TestOptions>();
    add_group_tests(*tests, options);
    add_distribution_tests(*tests, options);
    add_association_tests(*tests, options);
    add_summary_tests(*tests);
    tests->footer("\"qmml test TEST --help\" tells more.\n\nExamples:\n"
                  "  qmml test anova airquality.csv --value Temp --by Month --svg temp.svg\n"
                  "  qmml test correlation airquality.csv --x Wind --y Ozone\n"
                  "  qmml test binomial --successes 58 --n 100 --p0 0.5");
}

} // namespace qmml::host
