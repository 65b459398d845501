// The formula language: operator codes, priorities and the table of named functions.
#pragma once

#include <span>
#include <string_view>

namespace qmml::interp {

// Operator and token codes. The first seventeen are both; 20 and up are functions in alphabetical order.
enum Code : int {
    code_none = -1,
    code_power = 0,
    code_multiply,
    code_divide,
    code_add,
    code_subtract,
    code_equal,
    code_greater,
    code_greater_equal,
    code_less,
    code_less_equal,
    code_not_equal,
    code_and,
    code_or,
    code_not,
    code_left,
    code_right,
    code_separator,
    code_minus,
    code_ifgraph,
    code_ifgraph_row_column,
    code_function = 20, // the first function; as a token: any function
    code_value = 21,    // as a token only
    code_start = 100,   // as a token only: the formula proper begins here
};

// What an operation does with its operands.
enum class Operation : unsigned char {
    power,
    multiply,
    divide,
    add,
    subtract,
    equal,
    greater,
    greater_equal,
    less,
    less_equal,
    not_equal,
    logical_and,
    logical_or,
    logical_not,
    truth_and, // of two truth values
    truth_or,
    invalid, // a parenthesis or a separator left over
    minus,
    ifgraph,
    ifgraph_row_column,
    absolute,
    sign,
    truncate,
    square_root,
    exponential,
    logarithm,
    sine,
    cosine,
    minimum,
    maximum,
    normal,       // density
    lower_normal, // lower tail
    call_1,       // any other function, through its address
    call_2,
    distribution_1, // the same, where -3.0e30 stands for a missing value
    distribution_2,
    distribution_3,
    distribution_4,
};

union Address {
    double (*one)(double);
    double (*two)(double, double);
    double (*three)(double, double, double);
    double (*four)(double, double, double, double);
};

struct Function {
    std::string_view name; // empty for an operator
    Operation operation;
    int operands;
    int checked_operands; // how many a check takes from the stack before it puts its result there
    Address address;
};

// The relation that holds exactly where this one does not, missing values included; invalid for other operations.
Operation opposite(Operation relation) noexcept;

// True for operations that give 1.0 or 0.0.
constexpr bool gives_truth(Operation operation) noexcept
{
    return operation >= Operation::equal && operation <= Operation::truth_or;
}

// Indexed by operator code, 0 to 91.
const Function& function_of(int code) noexcept;

// All of them, operators first; for listings.
std::span<const Function> functions() noexcept;

// The operator code of a function's name in any case, or -1.
int find_function(std::string_view name) noexcept;

// Priority of an operator. Of the functions only the first one binds like a factor.
constexpr int level_of(int code) noexcept
{
    switch (code) {
    case code_power: return 6;
    case code_multiply:
    case code_divide:
    case code_not:
    case code_minus:
    case code_function: return 5;
    case code_add:
    case code_subtract: return 4;
    case code_equal:
    case code_greater:
    case code_greater_equal:
    case code_less:
    case code_less_equal:
    case code_not_equal: return 3;
    case code_and: return 2;
    case code_or: return 1;
    default: return 0;
    }
}

// True where an operand must start: a sign behind such a token is a unary one.
constexpr bool opens_operand(int token) noexcept
{
    return token == code_left || token == code_separator || token == code_start || token == code_none;
}

constexpr bool is_binary(int token) noexcept
{
    return token < code_not;
}

} // namespace qmml::interp
