#include "interp/column.h"

#include "core/missing.h"
#include "distrib/result.h"
#include "interp/column_kernels.h"
#include "platform/memory_hints.h"

#include <algorithm>
#include <cstdint>
#include <memory>
#include <new>

namespace qmml::interp {
namespace {

// Blocks for temporaries and for the ragged ends of columns. Most formulas need few: those stand on the stack.
class Workspace {
public:
    explicit Workspace(int blocks) noexcept
    {
        if (blocks > s_local_blocks)
            m_heap.reset(new (std::nothrow) double[static_cast<std::size_t>(blocks) * s_block]);
        m_blocks = blocks > s_local_blocks ? m_heap.get() : m_local;
    }
    bool good() const noexcept { return m_blocks != nullptr; }
    double* block(int i) const noexcept { return m_blocks + static_cast<std::ptrdiff_t>(i) * s_block; }

private:
    static constexpr int s_local_blocks = 4;
    alignas(64) double m_local[s_local_blocks * s_block];
    std::unique_ptr<double[]> m_heap;
    double* m_blocks;
};

class ColumnEvaluation {
public:
    ColumnEvaluation(const Program& program, const Graph& graph, const double* const* columns) noexcept
        : m_program(program), m_graph(graph), m_columns(columns), m_kernels(*s_column_kernels),
          m_workspace(program.temporaries + program.variables_used)
    {
    }

    bool ready() const noexcept { return m_workspace.good(); }
    void prefetch(std::ptrdiff_t first) const noexcept;
    void block(double* result, std::ptrdiff_t first, int n, bool streaming) noexcept;

private:
    void point_at_variables(std::ptrdiff_t first, int n) noexcept;
    const double* operand(const Instruction& instruction, int i) const noexcept;
    void execute_block(const Instruction& instruction, int n, int padded) noexcept;
    bool run_kernel(const Instruction& instruction, const OperationKernels& kernels, double* out, int padded) noexcept;
    bool run_normal(const Instruction& instruction, const OperationKernels& kernels, double* out, int padded) noexcept;
    void finish(const OperationKernels& kernels, double* out, int n, int padded) noexcept;
    void case_by_case(const Instruction& instruction, double* out, int n) noexcept;

    const Program& m_program;
    const Graph& m_graph;
    const double* const* const m_columns;
    const ColumnKernels& m_kernels;
    Workspace m_workspace;
    const double* m_variables[s_variable_limit] = {};
};

// Kernels work on whole registers, so the end of a column is copied to where there is room behind it.
void ColumnEvaluation::point_at_variables(std::ptrdiff_t first, int n) noexcept
{
    for (int v = 0; v < m_program.variables_used; ++v) {
        const double* column = m_columns != nullptr ? m_columns[v] : nullptr;
        double* copy = m_workspace.block(m_program.temporaries + v);
        m_variables[v] = copy;
        if (column == nullptr)
            std::fill_n(copy, s_block, s_missing);
        else if (n == s_block)
            m_variables[v] = column + first;
        else
            std::fill(std::copy_n(column + first, n, copy), copy + s_block, 0.0);
    }
}

// A block of a column is a page: the processor's own prefetching would begin anew with each.
void ColumnEvaluation::prefetch(std::ptrdiff_t first) const noexcept
{
    constexpr int step = platform::s_cache_line / static_cast<int>(sizeof(double));
    for (int v = 0; v < m_program.variables_used; ++v)
        if (m_columns != nullptr && m_columns[v] != nullptr)
            for (int i = 0; i < s_block; i += step)
                platform::prefetch(m_columns[v] + first + i);
}

const double* ColumnEvaluation::operand(const Instruction& instruction, int i) const noexcept
{
    const Operand& from = instruction.from[i];
    if (!from.varies)
        return instruction.source[i];
    return from.kind == Operand::variable ? m_variables[from.index] : m_workspace.block(static_cast<int>(from.index));
}

void ColumnEvaluation::case_by_case(const Instruction& instruction, double* out, int n) noexcept
{
    Instruction one = instruction;
    double values[4];
    double value;
    const double* from[4] = {};
    std::ptrdiff_t step[4] = {};
    for (int i = 0; i < instruction.operands; ++i) {
        from[i] = operand(instruction, i);
        step[i] = instruction.from[i].varies ? 1 : 0;
        one.source[i] = &values[i];
    }
    one.target = &value;
    for (int k = 0; k < n; ++k) {
        for (int i = 0; i < instruction.operands; ++i)
            values[i] = from[i][k * step[i]];
        execute(one, m_graph);
        out[k] = value;
    }
}

// Only with parameters that are the same for every case and that the functions would accept without a fault.
bool ColumnEvaluation::run_normal(const Instruction& instruction, const OperationKernels& kernels, double* out,
                                  int padded) noexcept
{
    if (!instruction.from[0].varies || instruction.from[1].varies || instruction.from[2].varies)
        return false;
    const double mu = *instruction.source[1], sigma = *instruction.source[2];
    if (!is_finite(mu) || !is_finite(sigma) || !(sigma > 0))
        return false;
    if (instruction.operation == Operation::normal) {
        kernels.normal(out, operand(instruction, 0), mu, sigma, padded);
    } else {
        kernels.lower_normal(out, operand(instruction, 0), mu, sigma, padded);
        distr_ok(0.0);
    }
    return true;
}

// False for an operation that is called case by case.
bool ColumnEvaluation::run_kernel(const Instruction& instruction, const OperationKernels& kernels, double* out,
                                  int padded) noexcept
{
    const auto binary = [&](const BinaryKernels& choice) {
        const bool left = instruction.from[0].varies, right = instruction.from[1].varies;
        const BinaryKernel kernel = left && right ? choice.both : left ? choice.left : choice.right;
        kernel(out, operand(instruction, 0), operand(instruction, 1), padded);
        return true;
    };
    const auto unary = [&](UnaryKernel kernel) {
        kernel(out, operand(instruction, 0), padded);
        return true;
    };

    switch (instruction.operation) {
    case Operation::multiply: return binary(kernels.multiply);
    case Operation::divide: return binary(kernels.divide);
    case Operation::add: return binary(kernels.add);
    case Operation::subtract: return binary(kernels.subtract);
    case Operation::equal: return binary(kernels.equal);
    case Operation::greater: return binary(kernels.greater);
    case Operation::greater_equal: return binary(kernels.greater_equal);
    case Operation::less: return binary(kernels.less);
    case Operation::less_equal: return binary(kernels.less_equal);
    case Operation::not_equal: return binary(kernels.not_equal);
    case Operation::logical_and: return binary(kernels.logical_and);
    case Operation::logical_or: return binary(kernels.logical_or);
    case Operation::logical_not: return unary(kernels.logical_not);
    case Operation::truth_and: return binary(kernels.truth_and);
    case Operation::truth_or: return binary(kernels.truth_or);
    case Operation::minus: return unary(kernels.minus);
    case Operation::absolute: return unary(kernels.absolute);
    case Operation::sign: return unary(kernels.sign);
    case Operation::truncate: return unary(kernels.truncate);
    case Operation::square_root: return unary(kernels.square_root);
    case Operation::exponential: return unary(kernels.exponential);
    case Operation::logarithm: return unary(kernels.logarithm);
    case Operation::sine: return unary(kernels.sine);
    case Operation::cosine: return unary(kernels.cosine);
    case Operation::minimum: return binary(kernels.minimum);
    case Operation::maximum: return binary(kernels.maximum);
    case Operation::power:
        if (!instruction.from[1].varies && *instruction.source[1] == 2.0)
            return unary(kernels.square);
        break;
    case Operation::normal:
    case Operation::lower_normal: return run_normal(instruction, kernels, out, padded);
    default: break;
    }
    return false;
}

void ColumnEvaluation::execute_block(const Instruction& instruction, int n, int padded) noexcept
{
    if (!instruction.varies) {
        execute(instruction, m_graph);
        return;
    }
    double* const out = m_workspace.block(instruction.result);
    if (!run_kernel(instruction, m_kernels.intermediate, out, padded))
        case_by_case(instruction, out, n);
}

// The last instruction of a formula mostly gives its value, and can put it where it belongs.
void ColumnEvaluation::finish(const OperationKernels& kernels, double* out, int n, int padded) noexcept
{
    const Operand& result = m_program.result;
    const Instruction* const last = m_program.instructions.empty() ? nullptr : &m_program.instructions.back();
    if (last != nullptr) {
        const bool is_result = result.kind == Operand::temporary && result.index == last->result && last->varies;
        if (is_result && run_kernel(*last, kernels, out, padded))
            return;
        execute_block(*last, n, padded);
    }
    if (result.varies) {
        const double* const source = result.kind == Operand::variable
                                         ? m_variables[result.index]
                                         : m_workspace.block(static_cast<int>(result.index));
        kernels.copy(out, source, padded);
    } else {
        alignas(64) double copies[s_block];
        std::fill_n(copies, padded, *m_program.result_source);
        kernels.copy(out, copies, padded);
    }
}

void ColumnEvaluation::block(double* result, std::ptrdiff_t first, int n, bool streaming) noexcept
{
    const int padded = (n + 7) / 8 * 8;
    point_at_variables(first, n);
    for (std::size_t i = 0; i + 1 < m_program.instructions.size(); ++i)
        execute_block(m_program.instructions[i], n, padded);
    if (n == s_block) {
        finish(streaming ? m_kernels.streamed : m_kernels.last, result + first, n, padded);
    } else {
        alignas(64) double ragged[s_block];
        finish(m_kernels.last, ragged, n, padded);
        std::copy_n(ragged, n, result + first);
    }
}

} // namespace

// Results of long columns go past the caches, where they would push the columns out that are still to be read.
static constexpr int s_streaming_length = 1 << 17;

// How many cases stand in front of the first one whose result begins a cache line.
static int cases_before_line(const double* result) noexcept
{
    const auto offset = reinterpret_cast<std::uintptr_t>(result) % platform::s_cache_line;
    return static_cast<int>((platform::s_cache_line - offset) % platform::s_cache_line / sizeof(double));
}

bool evaluate_column(const Program& program, const Graph& graph, double* result, int n,
                     const double* const* columns) noexcept
{
    ColumnEvaluation evaluation(program, graph, columns);
    if (!evaluation.ready())
        return false;
    const bool streaming = n >= s_streaming_length;
    std::ptrdiff_t first = streaming ? cases_before_line(result) : 0;
    if (first > 0)
        evaluation.block(result, 0, static_cast<int>(first), false);
    for (; first < n; first += s_block) {
        if (n - first - s_block >= s_block)
            evaluation.prefetch(first + s_block);
        evaluation.block(result, first, static_cast<int>(std::min<std::ptrdiff_t>(s_block, n - first)), streaming);
    }
    if (streaming)
        platform::finish_streaming();
    return true;
}

} // namespace qmml::interp
