// The formula language as the command explains it, and how the library counts positions in it.
#pragma once

#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace qmml::host {

struct Separators {
    char decimal = '.', list = ',';
};

struct Operator {
    std::string_view spelling, meaning;
    int priority; // the higher, the tighter
};
struct Constant {
    std::string_view name, meaning;
};
struct Function {
    std::string name;
    std::vector<std::string> arguments;
    std::string meaning;
};

std::span<const Operator> operators() noexcept;
std::span<const Constant> constants() noexcept;
std::span<const Function> mathematical_functions();
std::span<const Function> distribution_functions();

// What precedes the formula proper: "=" or a name for the result, as in "V1 = x + 1". An unknown first name is always
// such a name; without "=" behind it, it swallows the whole text.
struct Target {
    std::string name;
    bool incomplete = false; // a name and no "="
    std::size_t start = 0;   // from which the library counts positions
};
Target find_target(std::string_view formula, std::span<const std::string_view> variables, Separators separators);

} // namespace qmml::host
