// What the steps of a quick evaluation run, by operation and by where the operands stand.
#pragma once

#include "interp/steps.h"

namespace qmml::interp {

using Run = double (*)(const Step&, double) noexcept;

// An operand is the previous step's result, or in memory.
struct UnaryRuns {
    Operation operation;
    Run previous, memory;
};

struct BinaryRuns {
    Operation operation;
    Run previous_memory, memory_previous, memory_memory;
};

// An operation on the result of an inner one, whose operands are in memory. The third operand stands on the other side.
struct FusedRuns {
    Operation outer, inner;
    Run right_previous, right_memory, left;
};

// Null where there is none.
const UnaryRuns* find_unary(Operation operation) noexcept;
const BinaryRuns* find_binary(Operation operation) noexcept;
const FusedRuns* find_fused(Operation outer, Operation inner) noexcept;

} // namespace qmml::interp
