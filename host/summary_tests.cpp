#include "host/summary_tests.h"

#include "host/error.h"
#include "host/finding.h"
#include "host/output_file.h"

#include <qmml/distrib.h>

#include <memory>
#include <optional>

namespace qmml::host {
namespace {

// One value for each of one or two samples.
struct SummaryOptions {
    std::vector<double> mean, sd, n, successes;
    std::optional<double> expected;
    double level = 0.05;
    bool one_sided = false, pooled = false, exact = false;
};

void must_succeed(int result, int status)
{
    if (!result)
        throw Error(status == 1   ? "a proportion or a standard deviation is out of range"
                    : status == 2 ? "a sample is too small"
                                  : "the probability cannot be computed");
}

// One sample against an expected value, or two against each other: everything is given once for each.
std::size_t count_samples(const SummaryOptions& options, const std::vector<double>& first, const char* name)
{
    const std::size_t samples = first.size();
    if (options.n.size() != samples || samples > 2)
        throw Error(std::string(name) + " and --n take one number for each of one or two samples");
    if (samples == 1 && !options.expected)
        throw Error("one sample needs the expected value too");
    if (samples == 2 && options.expected)
        throw Error("two samples are compared with each other, not with an expected value");
    return samples;
}

std::string sides(bool one_sided)
{
    return one_sided ? ", one-sided" : ", two-sided";
}

void finish(Finding finding, double statistic, double p, const char* what, const SummaryOptions& options)
{
    if (!options.exact)
        finding.figures.emplace_back("z", rounded(statistic));
    finding.figures.emplace_back("p", probability(p));
    finding.conclusion = p < options.level ? std::string("The ") + what + " differ (p " + probability(p) + ")."
                                           : "No difference is shown (p " + probability(p) + ").";
    write_to_stdout(finding.text());
}

void test_means(const SummaryOptions& o)
{
    const std::size_t samples = count_samples(o, o.mean, "--mean");
    if (o.sd.size() != samples)
        throw Error("--sd takes one number for each sample");
    double z = 0, p = 1;
    int status = 0;
    Finding finding{(samples == 1 ? "z test of a mean" : "z test of two means") + sides(o.one_sided), {}, {}, ""};
    if (samples == 1) {
        must_succeed(
            zTestSingleSampleMean(*o.expected, o.mean[0], o.sd[0], o.n[0], o.one_sided ? 1 : 0, &z, &p, &status),
            status);
        finding.figures = {{"mean", rounded(o.mean[0])}, {"expected", rounded(*o.expected)}};
    } else {
        must_succeed(zTestTwoSampleMeans(o.mean[0], o.mean[1], o.sd[0], o.sd[1], o.n[0], o.n[1], o.one_sided ? 1 : 0,
                                         o.pooled ? 1 : 0, &z, &p, &status),
                     status);
        finding.figures = {{"means", rounded(o.mean[0]) + " and " + rounded(o.mean[1])}};
    }
    finish(finding, z, p, samples == 1 ? "mean and the expected one" : "means", o);
}

void test_proportions(const SummaryOptions& o)
{
    const std::size_t samples = count_samples(o, o.successes, "--successes");
    if (o.exact && samples == 2)
        throw Error("--exact is for one sample");
    for (std::size_t i = 0; i < samples; ++i)
        if (!(o.n[i] > 0) || !(o.successes[i] >= 0) || o.successes[i] > o.n[i])
            throw Error("successes lie between 0 and the size of the sample");
    double z = 0, p = 1;
    int status = 0;
    const bool one_sided = o.one_sided || o.exact;
    const char* const kind = o.exact ? "Exact binomial test" : "Binomial test by normal approximation";
    Finding finding{kind + sides(one_sided), {}, {}, ""};
    if (samples == 1) {
        const double proportion = o.successes[0] / o.n[0];
        must_succeed(BinomialTestSingleSample(*o.expected, proportion, o.n[0], one_sided ? 1 : 0, o.exact ? 0 : 1, &z,
                                              &p, &status),
                     status);
        finding.figures = {{"proportion", rounded(proportion)}, {"expected", rounded(*o.expected)}};
    } else {
        const double first = o.successes[0] / o.n[0], second = o.successes[1] / o.n[1];
        must_succeed(
            BinomialTestTwoSamples(first, second, o.n[0], o.n[1], one_sided ? 1 : 0, o.pooled ? 1 : 0, &z, &p, &status),
            status);
        finding.figures = {{"proportions", rounded(first) + " and " + rounded(second)}};
    }
    finish(finding, z, p, samples == 1 ? "proportion and the expected one" : "proportions", o);
}

CLI::App& add_test(CLI::App& tests, const char* name, const char* what, void (*run)(const SummaryOptions&),
                   const std::shared_ptr<SummaryOptions>& options)
{
    CLI::App& test = *tests.add_subcommand(name, what);
    test.add_option("--n", options->n, "Size of the sample, or of both")->expected(1, 2)->required();
    test.add_flag("--one-sided", options->one_sided, "The probability of the nearer tail alone");
    test.add_flag("--pooled", options->pooled, "Two samples: one common deviation");
    add_level_option(test, options->level);
    test.callback([=] {
        try {
            run(*options);
        } catch (const Error& error) {
            throw Error(std::string(name) + ": " + error.what());
        }
    });
    return test;
}

} // namespace

void add_level_option(CLI::App& test, double& level)
{
    test.add_option("--level", level, "Conclude up to this probability of an error [0.05]")
        ->check(CLI::Range(1e-6, 0.5));
}

void add_summary_tests(CLI::App& tests)
{
    const auto options = std::make_shared<SummaryOptions>();
    CLI::App& z = add_test(tests, "z", "Do means differ, whose deviations are known? z test of one or two samples",
                           test_means, options);
    z.add_option("--mean", options->mean, "Mean of the sample, or of both")->expected(1, 2)->required();
    z.add_option("--sd", options->sd, "Standard deviation, or both")->expected(1, 2)->required();
    z.add_option("--mu0", options->expected, "The expected mean of one sample");
    z.footer("Examples:\n  qmml test z --mean 10.3 --sd 2 --n 50 --mu0 10\n"
             "  qmml test z --mean 10.3 9.1 --sd 2 2.5 --n 50 40");

    CLI::App& binomial = add_test(tests, "binomial", "Do proportions differ? Binomial test of one or two samples",
                                  test_proportions, options);
    binomial.add_option("--successes", options->successes, "Successes in the sample, or in both")
        ->expected(1, 2)
        ->required();
    binomial.add_option("--p0", options->expected, "The expected proportion of one sample");
    binomial.add_flag("--exact", options->exact, "Exact instead of the normal approximation; one-sided");
    binomial.footer("Examples:\n  qmml test binomial --successes 58 --n 100 --p0 0.5\n"
                    "  qmml test binomial --successes 58 40 --n 100 90");
}

} // namespace qmml::host
