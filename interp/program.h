// A formula as a flat list of instructions over numbered places.
#pragma once

#include "interp/language.h"

#include <cstdint>
#include <vector>

namespace qmml::interp {

inline constexpr int s_stack_limit = 32;
inline constexpr int s_variable_limit = 3;

// Where an operand stands. Temporaries are numbered by their depth on the operand stack.
struct Operand {
    enum Kind : std::uint8_t { constant, variable, temporary };

    Kind kind = constant;
    bool varies = false; // from case to case
    bool truth = false;  // 0 or 1
    std::uint32_t index = 0;
};

struct Instruction {
    Operation operation;
    std::uint8_t operands;
    std::uint8_t result;     // temporary
    bool varies;             // some operand does
    Operand from[4];         // left to right
    const double* source[4]; // the same places in the frame
    double* target;
    Address call;
};

// What `ifgraph` compares with.
struct Graph {
    int mode = 0;
    int columns = 0;
    int graph = 0;
};

// The values that instructions work on. Constants follow the program; variables are set for each case.
struct Frame {
    double variables[s_variable_limit] = {};
    double temporaries[s_stack_limit] = {};
    bool spoilt = false; // a step has met an operand that it was not made for
};

struct Program {
    std::vector<Instruction> instructions;
    std::vector<double> constants;
    Operand result{Operand::variable, true, false, 0};
    const double* result_source = nullptr;
    int temporaries = 0;    // how many are used
    int variables_used = 0; // the highest variable's number plus one

    // To be called once all instructions are there: lets them point at the frame and at the constants.
    void link(Frame& frame) noexcept;
};

// One instruction on the frame.
void execute(const Instruction& instruction, const Graph& graph) noexcept;

// All of them, in order.
void execute(const Program& program, const Graph& graph) noexcept;

// The same inside a guard, for its flags: the operations that are quiet on every NaN raise none.
void execute_for_faults(const Program& program, const Graph& graph) noexcept;

} // namespace qmml::interp
