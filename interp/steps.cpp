#include "interp/steps.h"

#include "interp/step_runs.h"

#include <cmath>

namespace qmml::interp {
namespace {

class Builder {
public:
    Builder(std::vector<Step>& steps, bool* spoilt) noexcept : m_steps(steps), m_spoilt(spoilt) {}

    void add(const Instruction& instruction, const Range& range)
    {
        if (fuse(instruction))
            return;
        Operation operation = instruction.operation;
        Step step{nullptr,
                  {instruction.source[0], instruction.source[1], instruction.source[2]},
                  instruction.target,
                  std::ldexp(1.0, range.low),
                  m_spoilt};
        const bool left = is_previous(step.source[0]);
        if (operation == Operation::power && !left) { // a square
            operation = Operation::multiply;
            step.source[1] = step.source[0];
        }
        const bool right = instruction.operands > 1 && is_previous(step.source[1]);
        if (const UnaryRuns* const unary = find_unary(operation)) {
            step.run = left ? unary->previous : unary->memory;
        } else {
            const BinaryRuns* const binary = find_binary(operation);
            step.run = left ? binary->previous_memory : right ? binary->memory_previous : binary->memory_memory;
        }
        m_last = left || right ? Operation::invalid : operation;
        m_steps.push_back(step);
    }

private:
    bool is_previous(const double* source) const noexcept
    {
        return !m_steps.empty() && m_steps.back().target == source;
    }

    // An operation on the result of one that had both operands in memory.
    bool fuse(const Instruction& instruction) noexcept
    {
        const FusedRuns* const runs = find_fused(instruction.operation, m_last);
        if (runs == nullptr)
            return false;
        Step& inner = m_steps.back();
        const bool left = instruction.source[0] == inner.target;
        if (!left && instruction.source[1] != inner.target)
            return false;
        inner.source[2] = instruction.source[left ? 1 : 0];
        const bool third_is_previous = m_steps.size() > 1 && m_steps[m_steps.size() - 2].target == inner.source[2];
        inner.run = left ? runs->left : third_is_previous ? runs->right_previous : runs->right_memory;
        inner.target = instruction.target;
        m_last = Operation::invalid;
        return true;
    }

    std::vector<Step>& m_steps;
    bool* const m_spoilt;
    Operation m_last = Operation::invalid; // of the last step, where all its operands are in memory
};

} // namespace

void Steps::build(const Program& program, Frame& frame)
{
    m_steps.reserve(program.instructions.size());
    Range temporaries[s_stack_limit];
    Builder builder(m_steps, &frame.spoilt);
    for (const auto& instruction : program.instructions) {
        Range ranges[4];
        const double* constants[4] = {};
        for (int i = 0; i < instruction.operands; ++i) {
            const Operand& from = instruction.from[i];
            if (from.kind == Operand::constant) {
                if (!has_range(*instruction.source[i]))
                    return;
                constants[i] = instruction.source[i];
            }
            ranges[i] = from.kind == Operand::constant   ? range_of_constant(*instruction.source[i])
                        : from.kind == Operand::variable ? s_calm_range
                                                         : temporaries[from.index];
        }
        const auto range = range_of_result(instruction.operation, ranges, constants);
        if (!range)
            return;
        temporaries[instruction.result] = *range;
        builder.add(instruction, *range);
    }
    if (program.result.kind != Operand::constant || is_calm(*program.result_source))
        m_result = program.result_source;
}

} // namespace qmml::interp
