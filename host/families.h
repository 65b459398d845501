// The eighteen distributions, as the command and the formula language name them.
#pragma once

#include <limits>
#include <span>
#include <string_view>

namespace qmml::host {

struct Parameter {
    std::string_view name;
    double fallback = s_required;

    static constexpr double s_required = std::numeric_limits<double>::infinity();
    constexpr bool required() const { return fallback == s_required; }
};

// A point (or a probability) and the family's parameters in their order.
using PointFunction = double (*)(double point, const double* parameters);

struct Family {
    std::string_view name;         // of the command and of the library's functions
    std::string_view formula_name; // in a formula; with "i" in front the lower tail, with "v" the quantile
    std::string_view title;
    std::span<const Parameter> parameters;
    PointFunction density, lower, quantile; // a discrete family has no quantile
};

inline constexpr std::size_t s_most_parameters = 3;

std::span<const Family> families() noexcept;               // by name
const Family* find_family(std::string_view name) noexcept; // by either name; null when there is none

} // namespace qmml::host
