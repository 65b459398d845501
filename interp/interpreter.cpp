#include "core/missing.h"
#include "interp/column.h"
#include "interp/compiler.h"
#include "interp/operations.h"
#include "interp/steps.h"
#include "platform/float_guard.h"
#include "platform/separators.h"

#include <cstdarg>
#include <new>
#include <qmml/core.h>
#include <qmml/interp.h>
#include <string>

using namespace qmml;
using namespace qmml::interp;

static constexpr unsigned s_first_message = 12292; // of error 0; the others follow

// Everything that an interpreter remembers. The program is made by the first evaluation, the check's verdict by the
// first check; both depend on the text alone and hold from then on.
struct ExInterpreter::State {
    State(const char* text, int selector) : formula(text != nullptr ? text : ""), variables(known(selector))
    {
        const auto user = platform::separators();
        separators = {user.decimal, user.list};
    }

    State(const State& other)
        : formula(other.formula), variables(other.variables), separators(other.separators), graph(other.graph)
    {
    }
    State& operator=(const State&) = delete;

    static int known(int selector) noexcept
    {
        if (selector == -1)
            return -1;
        if (selector < -s_variable_limit || selector > s_variable_limit)
            return s_variable_limit;
        return selector < 0 ? -selector : selector;
    }

    Tokenizer tokenizer() const noexcept { return {formula.c_str(), formula.size(), separators, variables}; }

    // May throw std::bad_alloc; then nothing is kept.
    void prepare()
    {
        program = Program{};
        const Verdict made = compile(tokenizer(), program);
        program.link(frame);
        if (made.good)
            steps.build(program, frame);
        verdict = made;
        compiled = true;
        quick = steps.available() && !error_set;
    }

    void clear_error() noexcept
    {
        error_code = 0;
        error_position = 0;
        error_set = false;
        quick = steps.available();
    }

    int fail(const Verdict& with)
    {
        error_code = with.error;
        error_position = with.position;
        error_text = strGetStringFUNC(s_first_message + static_cast<unsigned>(with.error));
        error_set = true;
        quick = false;
        return 0;
    }

    bool begin() noexcept;
    int check_syntax();
    int evaluate(double* result) noexcept;
    int evaluate_guarded(double* result) noexcept;
    int evaluate_column(double* result, int n, const double* const* columns) noexcept;
    void set_variables(const double* values) noexcept;

    const std::string formula;
    const int variables; // how many of X, Y, Z; -1 for T
    interp::Separators separators;
    Graph graph;

    Program program;
    Frame frame;
    Steps steps;
    Verdict verdict; // of the program
    Verdict checked; // of the check
    bool compiled = false;
    bool check_done = false;
    bool quick = false; // there are steps, and no error to clear

    bool error_set = false;
    int error_code = 0;
    int error_position = 0;
    CString error_text;
};

int ExInterpreter::State::check_syntax()
{
    clear_error();
    if (!check_done) {
        checked = check(tokenizer());
        check_done = true;
    }
    return checked.good ? 1 : fail(checked);
}

void ExInterpreter::State::set_variables(const double* values) noexcept
{
    for (int v = 0; v < program.variables_used; ++v)
        frame.variables[v] = values != nullptr ? values[v] : s_missing;
}

// The variables are set.
int ExInterpreter::State::evaluate(double* result) noexcept
{
    if (platform::unmasked_faults() != 0 || !verdict.good)
        return evaluate_guarded(result);
    execute(program, graph);
    *result = outcome<ScalarLane>(*program.result_source);
    return 1;
}

// A fault that the caller wants to hear of makes the value missing, even where the rest of the formula hides it, and
// comes before an error that stands behind it in the text.
int ExInterpreter::State::evaluate_guarded(double* result) noexcept
{
    {
        const platform::FloatGuard guard;
        execute_for_faults(program, graph);
        if (guard.faulted()) {
            set_nan(*result);
            return 1;
        }
    }
    if (verdict.good) {
        *result = outcome<ScalarLane>(*program.result_source);
        return 1;
    }
    set_nan(*result);
    return fail(verdict);
}

int ExInterpreter::State::evaluate_column(double* result, int n, const double* const* columns) noexcept
{
    if (platform::unmasked_faults() == 0) {
        if (!verdict.good) {
            for (int i = 0; i < n; ++i)
                set_nan(result[i]);
            return fail(verdict);
        }
        if (interp::evaluate_column(program, graph, result, n, columns))
            return n;
    }
    int evaluated = 0;
    for (int i = 0; i < n; ++i) {
        double values[s_variable_limit];
        for (int v = 0; v < program.variables_used; ++v)
            values[v] = columns != nullptr && columns[v] != nullptr ? columns[v][i] : s_missing;
        set_variables(values);
        evaluated += evaluate(&result[i]);
    }
    return verdict.good || evaluated == n ? evaluated : 0;
}

ExInterpreter::ExInterpreter(const char* formula, int variables)
{
    try {
        m_state = new State(formula, variables);
    } catch (const std::bad_alloc&) {
        m_state = nullptr;
    }
}

ExInterpreter::ExInterpreter(const ExInterpreter& other) : m_state(nullptr)
{
    if (other.m_state == nullptr)
        return;
    try {
        m_state = new State(*other.m_state);
    } catch (const std::bad_alloc&) {
        m_state = nullptr;
    }
}

ExInterpreter::~ExInterpreter()
{
    delete m_state;
}

// Without memory there is no value, and as after a fault no error is recorded.
static int out_of_memory(double* result) noexcept
{
    set_nan(*result);
    return 1;
}

// What every evaluation but a quick one begins with. False where there is no program.
bool ExInterpreter::begin_slowly(const double* result) noexcept
{
    return result != nullptr && m_state != nullptr && (m_state->quick || m_state->begin());
}

bool ExInterpreter::State::begin() noexcept
{
    if (!compiled) {
        try {
            const platform::FloatGuard guard; // reading numbers is not part of the evaluation
            prepare();
        } catch (const std::bad_alloc&) {
            return false;
        }
    }
    if (error_set)
        clear_error();
    return true;
}

// Once the text has been read, ordinary values go straight through the steps: they cannot raise a fault, and so nobody
// needs to ask for the caller's masks.
int ExInterpreter::ExpresVal(double* result, double first, ...)
{
    const bool quick = result != nullptr && m_state != nullptr && m_state->quick;
    if (!quick && !begin_slowly(result)) [[unlikely]]
        return result != nullptr ? out_of_memory(result) : ExpresCheck();
    State& state = *m_state;
    double* const variables = state.frame.variables;
    const int used = state.program.variables_used;
    bool calm = is_calm(first);
    variables[0] = first;
    if (used > 1) {
        std::va_list rest;
        va_start(rest, first);
        variables[1] = va_arg(rest, double);
        calm &= is_calm(variables[1]);
        if (used > 2) {
            variables[2] = va_arg(rest, double);
            calm &= is_calm(variables[2]);
        }
        va_end(rest);
    }
    if (calm && state.quick && platform::seems_masked() && state.steps.evaluate(state.frame, result)) [[likely]]
        return 1;
    return state.evaluate(result);
}

int ExInterpreter::ExpresValues(double* result, const double* values)
{
    if (!begin_slowly(result))
        return result != nullptr ? out_of_memory(result) : ExpresCheck();
    State& state = *m_state;
    state.set_variables(values);
    bool calm = state.quick;
    for (int v = 0; v < state.program.variables_used; ++v)
        calm = calm && is_calm(state.frame.variables[v]);
    if (calm && platform::seems_masked() && state.steps.evaluate(state.frame, result))
        return 1;
    return state.evaluate(result);
}

int ExInterpreter::ExpresCheck()
{
    if (m_state == nullptr)
        return 0;
    const platform::FloatGuard guard;
    return m_state->check_syntax();
}

int ExInterpreter::ExpresColumn(double* result, int n, const double* const* columns)
{
    if (n <= 0 || m_state == nullptr)
        return 0;
    if (result == nullptr)
        return ExpresCheck() != 0 ? n : 0;
    if (!m_state->begin()) {
        for (int i = 0; i < n; ++i)
            set_nan(result[i]);
        return n;
    }
    return m_state->evaluate_column(result, n, columns);
}

int ExInterpreter::GetInterpreterError() const
{
    return m_state != nullptr ? m_state->error_code : 0;
}

int ExInterpreter::GetInterpreterErrorPos() const
{
    return m_state != nullptr ? m_state->error_position : 0;
}

const char* ExInterpreter::GetInterpreterErrorDescr() const
{
    return m_state != nullptr && m_state->error_set ? static_cast<const char*>(m_state->error_text) : "";
}

void ExInterpreter::SetIfgraphMode(int mode, int columns)
{
    if (m_state == nullptr)
        return;
    m_state->graph.mode = mode;
    m_state->graph.columns = columns;
}

void ExInterpreter::SetIfgraphGraph(int graph)
{
    if (m_state != nullptr)
        m_state->graph.graph = graph;
}
