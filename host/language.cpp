#include "host/language.h"

#include "host/families.h"

#include <algorithm>
#include <array>
#include <cctype>

namespace qmml::host {

static constexpr Operator s_operators[] = {
    {"^  **", "power; 2^3^2 is 2^(3^2), and -2^2 is -4", 6},
    {"*  /", "product, quotient", 5},
    {"-", "sign in front of an operand", 5},
    {"~  not", "1 when the operand is 0 or missing, else 0", 5},
    {"+  -", "sum, difference", 4},
    {"=  <>", "equal, not equal: 1 or 0", 3},
    {"<  <=  >  >=", "order: 1 or 0", 3},
    {"&  and", "1 when both operands differ from 0", 2},
    {"|  or", "1 when one operand differs from 0", 1},
};

static constexpr Constant s_constants[] = {{"euler", "2.7182818"}, {"pi", "3.1415926"}};

std::span<const Operator> operators() noexcept
{
    return s_operators;
}

std::span<const Constant> constants() noexcept
{
    return s_constants;
}

std::span<const Function> mathematical_functions()
{
    static const Function s_functions[] = {
        {"abs", {"x"}, "absolute value"},
        {"arccos", {"x"}, "arc cosine, in radians"},
        {"arcsin", {"x"}, "arc sine, in radians"},
        {"arctan", {"x"}, "arc tangent, in radians"},
        {"cos", {"x"}, "cosine of x radians"},
        {"cosh", {"x"}, "hyperbolic cosine"},
        {"exp", {"x"}, "e raised to x"},
        {"hypot", {"a", "b"}, "square root of a^2 + b^2"},
        {"ifgraph", {"n"}, "1 on the n-th of several plotted curves, else 0; also ifgraph(row, column)"},
        {"invinorm", {"p"}, "rough normal quantile; vnormal is the accurate one"},
        {"log", {"x"}, "natural logarithm"},
        {"log10", {"x"}, "logarithm to base 10"},
        {"log2", {"x"}, "logarithm to base 2"},
        {"max", {"a", "b"}, "the greater of two; a where one is missing"},
        {"min", {"a", "b"}, "the smaller of two; b where one is missing"},
        {"sign", {"x"}, "-1, 0 or 1; 0 where x is missing"},
        {"sin", {"x"}, "sine of x radians"},
        {"sinh", {"x"}, "hyperbolic sine"},
        {"sqrt", {"x"}, "square root"},
        {"tan", {"x"}, "tangent of x radians"},
        {"tanh", {"x"}, "hyperbolic tangent"},
        {"trunc", {"x"}, "x without its fraction"},
    };
    return s_functions;
}

std::span<const Function> distribution_functions()
{
    static const std::vector<Function> s_functions = [] {
        std::vector<Function> functions;
        const auto add = [&](const char* prefix, const char* point, const char* what, const Family& family) {
            Function function{prefix + std::string(family.formula_name), {point}, what + std::string(family.title)};
            for (const Parameter& parameter : family.parameters)
                function.arguments.emplace_back(parameter.name);
            functions.push_back(std::move(function));
        };
        for (const Family& family : families()) {
            add("", "x", family.quantile ? "density: " : "probability: ", family);
            add("i", "x", "lower tail: ", family);
            if (family.quantile)
                add("v", "p", "quantile: ", family);
        }
        return functions;
    }();
    return s_functions;
}

static bool same_letters(std::string_view a, std::string_view b)
{
    return std::ranges::equal(a, b, [](char left, char right) {
        return std::tolower(static_cast<unsigned char>(left)) == std::tolower(static_cast<unsigned char>(right));
    });
}

static bool is_known(std::string_view name, std::span<const std::string_view> variables)
{
    const auto is_it = [&](const auto& entry) { return same_letters(entry.name, name); };
    return std::ranges::any_of(mathematical_functions(), is_it) ||
           std::ranges::any_of(distribution_functions(), is_it) || std::ranges::any_of(constants(), is_it) ||
           std::ranges::any_of(variables, [&](std::string_view variable) { return same_letters(variable, name); });
}

Target find_target(std::string_view formula, std::span<const std::string_view> variables, Separators separators)
{
    constexpr std::string_view blanks = " \t\n\v\f\r";
    const auto next_non_blank = [&](std::size_t from) {
        return std::min(formula.find_first_not_of(blanks, from), formula.size());
    };
    if (formula.starts_with('='))
        return {{}, false, next_non_blank(1)};

    const std::size_t first = next_non_blank(0);
    const std::string_view rest = formula.substr(first);
    const auto begins_with = [&](std::string_view word) { return rest.starts_with(word); };
    const std::string operator_characters = std::string("^*/+-=><&|~()") + separators.list;
    const std::string digits = std::string("0123456789") + separators.decimal;
    constexpr std::array<std::string_view, 4> keywords = {"and", "or", "not", "ifgraph"};
    const bool at_end = rest.empty() || begins_with("//") || (begins_with(";") && separators.list != ';');
    if (at_end || operator_characters.find(rest[0]) != std::string::npos || digits.find(rest[0]) != std::string::npos ||
        std::ranges::any_of(keywords, begins_with))
        return {};

    const std::string_view name =
        rest.substr(0, rest.find_first_of(std::string(" \t\r\n^*/+-=><();") + separators.list));
    if (is_known(name, variables))
        return {};
    const std::size_t equals = formula.find('=', first + name.size());
    if (equals == formula.npos)
        return {std::string(name), true, first};
    return {std::string(name), false, next_non_blank(equals + 1)};
}

} // namespace qmml::host
