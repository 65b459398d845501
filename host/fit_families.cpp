#include "host/fit_families.h"

#include "host/data_file.h"
#include "host/error.h"
#include "host/table.h"

#include <qmml/distrib.h>
#include <qmml/stattest.h>

#include <algorithm>
#include <iterator>

namespace qmml::host {

using P = const Parameters&;

template <auto Call>
static int fit_one(int n, const double* data, Parameters& p, int* error)
{
    return Call(n, data, s_no_value, p.data(), error);
}

template <auto Call>
static int fit_two(int n, const double* data, Parameters& p, int* error)
{
    return Call(n, data, s_no_value, p.data(), p.data() + 1, error);
}

static int fit_weibull(int n, const double* data, Parameters& p, int* error)
{
    return FitWeibullDistribution(n, data, s_no_value, p.data(), p.data() + 1, p.data() + 2, error);
}

static const FitFamily s_families[] = {
    {"beta", "beta", 7, {"a", "b"}, [](double x, P p) { return d_beta(x, p[0], p[1]); }, fit_two<FitBetaDistribution>},
    {"expon",
     "exponential",
     6,
     {"lambda"},
     [](double x, P p) { return d_expon(x, p[0]); },
     fit_one<FitExponentialDistribution>},
    {"extreme",
     "extreme value",
     11,
     {"location", "scale"},
     [](double x, P p) { return d_extreme(x, p[0], p[1]); },
     fit_two<FitExtremeDistribution>},
    {"gamma",
     "gamma",
     8,
     {"scale", "shape"},
     [](double x, P p) { return d_gamma(x / p[0], p[1]) / p[0]; },
     fit_two<FitGammaDistribution>},
    {"geom", "geometric", 5, {"p"}, [](double x, P p) { return d_geom(x, p[0]); }, nullptr, true},
    {"laplace", "Laplace", 2, {"location", "scale"}, [](double x, P p) { return d_laplace(x, p[0], p[1]); }},
    {"logis", "logistic", 3, {"location", "scale"}, [](double x, P p) { return d_logis(x, p[0], p[1]); }},
    {"lognorm",
     "log-normal",
     9,
     {"mu", "sigma"},
     [](double x, P p) { return d_lognorm(x, p[0], p[1]); },
     fit_two<FitLognormalDistribution>},
    {"normal",
     "normal",
     1,
     {"mu", "sigma"},
     [](double x, P p) { return d_normal(x, p[0], p[1]); },
     fit_two<FitNormalDistribution>},
    {"poisson", "Poisson", 4, {"lambda"}, [](double x, P p) { return d_poisson(x, p[0]); }, nullptr, true},
    {"rayleigh",
     "Rayleigh",
     12,
     {"b"},
     [](double x, P p) { return d_rayleigh(x, p[0]); },
     fit_one<FitRayleighDistribution>},
    {"weibull",
     "Weibull",
     10,
     {"scale", "shape", "location"},
     [](double x, P p) { return d_weibull(x, p[0], p[1], p[2]); },
     fit_weibull},
};

std::span<const FitFamily> fit_families()
{
    return s_families;
}

const FitFamily& find_fit_family(const std::string& name, bool to_fit)
{
    const auto fits = [&](const FitFamily& family) { return family.fit || !to_fit; };
    const auto found =
        std::ranges::find_if(s_families, [&](const FitFamily& family) { return family.name == name && fits(family); });
    if (found != std::end(s_families))
        return *found;
    std::string list;
    for (const FitFamily& family : s_families)
        if (fits(family))
            list += (list.empty() ? "" : ", ") + std::string(family.name);
    throw Error("no family \"" + name + "\"" + (to_fit ? " to fit" : "") + "; there are " + list);
}

std::string parameters_text(const FitFamily& family, const Parameters& parameters)
{
    std::string text;
    for (std::size_t i = 0; i < family.parameters.size(); ++i)
        text += (i ? ", " : "") + std::string(family.parameters[i]) + " = " + rounded(parameters[i], 5);
    return text;
}

void measure_distance(const FitFamily& family, const std::vector<double>& sample, Fit& fit)
{
    int error = 0;
    const Parameters& p = fit.parameters;
    if (ComputeKolmogorovSmirnovTest__(0, family.code, p[0], p[1], p[2], static_cast<int>(sample.size()), sample.data(),
                                       s_no_value, &fit.distance, &fit.level, &fit.lilliefors, &error) == 0)
        return;
    throw Error(error == 1    ? "all values are equal"
                : error == 2  ? "fewer than three values"
                : error == 99 ? "out of memory"
                              : "the distribution cannot be computed with these parameters");
}

Fit fit_distribution(const FitFamily& family, const std::vector<double>& sample, double location)
{
    Fit fit;
    fit.parameters[2] = family.name == "weibull" ? location : 0;
    int error = 0;
    if (family.fit(static_cast<int>(sample.size()), sample.data(), fit.parameters, &error) != 0)
        throw Error(std::string("no ") + family.title + " distribution fits: " +
                    (error == 1    ? "too few values"
                     : error == 2  ? "all values are equal"
                     : error == 3  ? "a value lies outside its support"
                     : error == 99 ? "out of memory"
                                   : "no convergence, or a parameter out of range"));
    return fit;
}

std::string bracket(double level)
{
    static constexpr double s_levels[] = {0.01, 0.05, 0.1, 0.15, 0.2};
    if (level >= 0.5)
        return "above 0.2";
    double below = 0;
    for (const double step : s_levels) {
        if (level < step + 0.001) // the library's levels went through single precision
            return below == 0 ? "below 0.01" : "between " + rounded(below) + " and " + rounded(step);
        below = step;
    }
    return "above 0.2";
}

} // namespace qmml::host
