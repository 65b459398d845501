#include "host/error.h"
#include "host/sample_tests.h"

#include <qmml/descstat.h>
#include <qmml/stattest.h>

namespace qmml::host {

static std::string count_of(const std::vector<double>& sample)
{
    return std::to_string(sample.size());
}

static std::string normality(const std::string& name, bool rejected, const std::string& p)
{
    return rejected ? name + " is not normally distributed (p " + p + ")."
                    : name + " may be normally distributed (p " + p + ").";
}

Finding shapiro_test(const std::string& name, const std::vector<double>& sample, double level)
{
    double w = 1, p = 1;
    int error = 0;
    const int n = static_cast<int>(sample.size());
    if (WilksWTest__(0, 0, sample.data(), n, n, &w, &p, &error) != 0)
        throw Error(error == 1   ? "fewer than three values"
                    : error == 2 ? "more than 5000 values: too many for this test"
                    : error == 6 ? "all values are equal"
                                 : "out of memory");
    return {"Shapiro-Wilk test of " + name,
            {},
            {{"W", rounded(w)}, {"n", count_of(sample)}, {"p", probability(p)}},
            normality(name, p < level, probability(p))};
}

Finding lilliefors_test(const std::string& name, const std::vector<double>& sample, double level)
{
    Fit fit;
    int count = 0;
    GetNormalCurveStats(sample.data(), static_cast<int>(sample.size()), &count, fit.parameters.data(),
                        fit.parameters.data() + 1);
    const FitFamily& normal = find_fit_family("normal", false);
    measure_distance(normal, sample, fit);
    return {"Lilliefors test of " + name,
            {},
            {{"D", rounded(fit.distance)},
             {"n", count_of(sample)},
             {"mean", rounded(fit.parameters[0])},
             {"sd", rounded(fit.parameters[1])},
             {"p", bracket(fit.lilliefors)}},
            normality(name, fit.lilliefors < level * 1.0001, bracket(fit.lilliefors))};
}

Finding kolmogorov_test(const std::string& name, const std::vector<double>& sample, const FitFamily& family,
                        const Parameters& parameters, double level)
{
    Fit fit;
    fit.parameters = parameters;
    measure_distance(family, sample, fit);
    const std::string distribution = std::string(family.title) + " (" + parameters_text(family, parameters) + ")";
    return {"Kolmogorov-Smirnov test of " + name,
            {},
            {{"distribution", distribution},
             {"D", rounded(fit.distance)},
             {"n", count_of(sample)},
             {"p", bracket(fit.level)}},
            name + (fit.level < level * 1.0001 ? " does not have" : " may have") + " this distribution (p " +
                bracket(fit.level) + ")."};
}

} // namespace qmml::host
