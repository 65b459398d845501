#include "interp/compiler.h"

#include <algorithm>

namespace qmml::interp {
namespace {

constexpr unsigned set(auto... classes)
{
    return (0u | ... | (1u << classes));
}

// The automaton of a check: which classes of token may follow which.
class Syntax {
public:
    void accept(int token)
    {
        const int next = class_of(token);
        if (next == s_left)
            ++m_depth;
        else if (next == s_right)
            --m_depth;
        if ((s_allowed[m_state] & 1u << next) == 0)
            throw FormulaError{error_syntax};
        m_state = next;
    }
    bool balanced() const noexcept { return m_depth == 0; }

private:
    static constexpr int s_left = 1, s_value = 2, s_function = 3, s_sign = 4, s_binary = 5, s_right = 6,
                         s_separator = 7, s_not = 8;
    static int class_of(int token) noexcept
    {
        switch (token) {
        case code_left: return s_left;
        case code_value: return s_value;
        case code_function: return s_function;
        case code_add:
        case code_subtract: return s_sign;
        case code_right: return s_right;
        case code_separator: return s_separator;
        case code_not: return s_not;
        default: return s_binary;
        }
    }

    static constexpr unsigned s_operand = set(s_left, s_value, s_function, s_sign, s_not);
    static constexpr unsigned s_after_operand = set(s_sign, s_binary, s_right, s_separator);
    static constexpr unsigned s_allowed[] = {
        0,
        s_operand,                               // at the start, after "("
        s_after_operand,                         // after a value
        set(s_left),                             // after a function's name
        set(s_left, s_value, s_function, s_not), // after a sign: no second one
        s_operand,                               // after another binary operator
        s_after_operand,                         // after ")"
        s_operand,                               // after a separator
        s_operand,                               // after "not"
    };

    int m_state = s_left;
    int m_depth = 0;
};

class Pass {
public:
    Pass(Tokenizer& tokenizer, Program* program) noexcept : m_tokenizer(tokenizer), m_program(program) {}

    void run();

private:
    bool checking() const noexcept { return m_program == nullptr; }

    int top() const noexcept { return m_operator_count > 0 ? m_operators[m_operator_count - 1] : int{code_none}; }
    void push_operator(int code);
    int pop_operator();
    void push_operand(Operand operand);
    void push_constant(double value);

    void take(const Token& token);
    void take_sign(int token, int level);
    void reduce();
    void reduce_to_level(int level);
    void reduce_to_left();
    void emit(const Function& function);
    bool turn_last_relation();

    Tokenizer& m_tokenizer;
    Program* const m_program;
    Syntax m_syntax;
    int m_previous = code_none;
    int m_operators[s_stack_limit];
    int m_operator_count = 0;
    Operand m_operands[s_stack_limit];
    int m_operand_count = 0;
};

void Pass::push_operator(int code)
{
    if (m_operator_count == s_stack_limit)
        throw FormulaError{error_syntax};
    m_operators[m_operator_count++] = code;
}

int Pass::pop_operator()
{
    if (m_operator_count == 0)
        throw FormulaError{error_syntax};
    return m_operators[--m_operator_count];
}

void Pass::push_operand(Operand operand)
{
    if (m_operand_count == s_stack_limit)
        throw FormulaError{error_syntax};
    m_operands[m_operand_count++] = operand;
}

void Pass::push_constant(double value)
{
    push_operand(
        {Operand::constant, false, false, checking() ? 0u : static_cast<std::uint32_t>(m_program->constants.size())});
    if (!checking())
        m_program->constants.push_back(value);
}

void Pass::reduce()
{
    const Function& function = function_of(pop_operator());
    const int needed = checking() ? function.checked_operands : function.operands;
    if (function.operation == Operation::invalid || m_operand_count < needed)
        throw FormulaError{error_syntax};
    if (!checking()) {
        if (function.operation != Operation::logical_not || !turn_last_relation())
            emit(function);
    } else
        // A check may need fewer operands than it uses up: what is missing is missed later.
        m_operand_count -= function.operands - 1;
}

// "not" behind a relation makes it the opposite one.
bool Pass::turn_last_relation()
{
    const Operand& operand = m_operands[m_operand_count - 1];
    if (operand.kind != Operand::temporary || m_program->instructions.empty())
        return false;
    Instruction& last = m_program->instructions.back();
    const Operation turned = opposite(last.operation);
    if (turned == Operation::invalid || last.result != operand.index)
        return false;
    last.operation = turned;
    return true;
}

// On truth values the logical operators are simpler.
static Operation simplified(Operation operation, const Operand* operands) noexcept
{
    if (operation == Operation::logical_and && operands[0].truth && operands[1].truth)
        return Operation::truth_and;
    if (operation == Operation::logical_or && operands[0].truth && operands[1].truth)
        return Operation::truth_or;
    return operation;
}

void Pass::emit(const Function& function)
{
    m_operand_count -= function.operands;
    Instruction instruction{};
    instruction.operation = simplified(function.operation, m_operands + m_operand_count);
    instruction.operands = static_cast<std::uint8_t>(function.operands);
    instruction.result = static_cast<std::uint8_t>(m_operand_count);
    instruction.call = function.address;
    std::copy_n(m_operands + m_operand_count, function.operands, instruction.from);
    instruction.varies = std::any_of(instruction.from, instruction.from + function.operands,
                                     [](const Operand& operand) { return operand.varies; });
    m_program->temporaries = std::max(m_program->temporaries, m_operand_count + 1);
    m_program->instructions.push_back(instruction);
    push_operand({Operand::temporary, instruction.varies, gives_truth(instruction.operation), instruction.result});
}

void Pass::reduce_to_level(int level)
{
    while (level_of(top()) >= level)
        reduce();
}

// Without a parenthesis to stop it the stack runs empty, which is the error that the user sees.
void Pass::reduce_to_left()
{
    while (top() != code_left)
        reduce();
}

void Pass::take_sign(int token, int level)
{
    if (!opens_operand(m_previous) && !is_binary(m_previous)) {
        reduce_to_level(level);
        push_operator(token);
    } else if (token == code_subtract) {
        push_operator(code_minus);
    }
}

void Pass::take(const Token& token)
{
    switch (token.code) {
    case code_power:
    case code_not:
    case code_left: push_operator(token.code); break;
    case code_add:
    case code_subtract: take_sign(token.code, level_of(token.code)); break;
    case code_right:
        reduce_to_left();
        pop_operator();
        if (top() == code_minus || top() >= code_ifgraph)
            reduce();
        break;
    case code_separator:
        reduce_to_left();
        // A second argument makes it the other ifgraph.
        if (m_operator_count >= 2 && m_operators[m_operator_count - 2] == code_ifgraph)
            m_operators[m_operator_count - 2] = code_ifgraph_row_column;
        break;
    case code_function: push_operator(token.index); break;
    case code_value:
        if (token.kind == Token::variable) {
            if (!checking())
                m_program->variables_used = std::max(m_program->variables_used, token.index + 1);
            push_operand({Operand::variable, true, false, static_cast<std::uint32_t>(token.index)});
        } else {
            push_constant(token.value);
        }
        if (token.kind == Token::number)
            m_tokenizer.expect_break();
        break;
    default: // the other binary operators
        reduce_to_level(level_of(token.code));
        push_operator(token.code);
    }
}

void Pass::run()
{
    if (m_tokenizer.blank())
        throw FormulaError{error_empty};
    m_tokenizer.begin_token();
    for (; !m_tokenizer.at_end(); m_tokenizer.begin_token()) {
        const Token token = m_tokenizer.next();
        if (token.code == code_start) {
            m_tokenizer.restart();
        } else {
            take(token);
            if (checking())
                m_syntax.accept(token.code);
        }
        m_previous = token.code;
    }
    while (m_operator_count > 0)
        reduce();
    if (m_operand_count < 1)
        throw FormulaError{error_syntax};
    --m_operand_count;
    if (!checking()) {
        m_program->result = m_operands[m_operand_count];
        return;
    }
    if (!m_syntax.balanced())
        throw FormulaError{error_parenthesis};
    if (m_operand_count > 0)
        throw FormulaError{error_syntax};
}

Verdict run_pass(Tokenizer& tokenizer, Program* program)
{
    try {
        Pass(tokenizer, program).run();
        return {};
    } catch (const FormulaError& error) {
        return {false, error.code, tokenizer.error_position()};
    }
}

} // namespace

Verdict compile(Tokenizer tokenizer, Program& program)
{
    return run_pass(tokenizer, &program);
}

Verdict check(Tokenizer tokenizer)
{
    return run_pass(tokenizer, nullptr);
}

} // namespace qmml::interp
