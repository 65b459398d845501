// The families that the library tests a sample against, eight of which it fits.
#pragma once

#include <array>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace qmml::host {

using Parameters = std::array<double, 3>;

struct FitFamily {
    std::string_view name;
    const char* title;
    int code; // of the library's Kolmogorov-Smirnov test
    std::vector<std::string_view> parameters;
    double (*density)(double x, const Parameters& parameters);
    // Null where the library has no fit. The third parameter of a Weibull distribution is read.
    int (*fit)(int n, const double* data, Parameters& parameters, int* error) = nullptr;
    bool discrete = false;
};

std::span<const FitFamily> fit_families();
const FitFamily& find_fit_family(const std::string& name, bool to_fit); // an Error if there is none

std::string parameters_text(const FitFamily& family, const Parameters& parameters); // "mu = 1, sigma = 2"

struct Fit {
    Parameters parameters{};
    double distance = 0, level = 1; // of Kolmogorov and Smirnov; 1: above 0.2
    double lilliefors = 1;          // the level that takes the fit into account, normal family only
};

// By maximum likelihood; location is that of a Weibull distribution. An Error when the sample has no fit.
Fit fit_distribution(const FitFamily& family, const std::vector<double>& sample, double location);

// An Error when there is nothing to compare.
void measure_distance(const FitFamily& family, const std::vector<double>& sample, Fit& fit);

std::string bracket(double level); // "between 0.01 and 0.05"

} // namespace qmml::host
