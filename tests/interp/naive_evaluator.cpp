#include "interp/naive_evaluator.h"

#include "core/elementary.h"

#include <cmath>
#include <cstdlib>
#include <cstring>
#include <functional>
#include <limits>
#include <map>
#include <qmml/distrib.h>

namespace naive {
namespace {

struct Failure {
    int code;
};

const double s_nan = std::numeric_limits<double>::quiet_NaN();

double truth(bool b)
{
    return b ? 1.0 : 0.0;
}
double bad_to_nan(double r)
{
    return r == -3.0e30 ? s_nan : r;
}
bool holds(double a)
{
    return !std::isnan(a) && a != 0;
}

// The functions in the order of their codes, 20 and up.
struct Named {
    const char* name;
    int count;
    std::function<double(const double*)> call;
};

#define F1(name, expression)                                                                                           \
    {                                                                                                                  \
        name, 1, [](const double* v) {                                                                                 \
            const double x = v[0];                                                                                     \
            return expression;                                                                                         \
        }                                                                                                              \
    }
#define D2(name, f)                                                                                                    \
    {                                                                                                                  \
        name, -2, [](const double* v) { return bad_to_nan(f(v[0], v[1])); }                                            \
    }
#define D3(name, f)                                                                                                    \
    {                                                                                                                  \
        name, -3, [](const double* v) { return bad_to_nan(f(v[0], v[1], v[2])); }                                      \
    }
#define D4(name, f)                                                                                                    \
    {                                                                                                                  \
        name, -4, [](const double* v) { return bad_to_nan(f(v[0], v[1], v[2], v[3])); }                                \
    }

const std::vector<Named>& named()
{
    using namespace qmml;
    static const std::vector<Named> s_named = {
        F1("abs", std::fabs(x)),
        F1("arccos", std::acos(x)),
        F1("arcsin", std::asin(x)),
        F1("arctan", elementary::atan(x)),
        D3("beta", d_beta),
        D3("binom", d_binom),
        D3("cauchy", d_cauchy),
        D2("chi2", d_chi2),
        F1("cos", elementary::cos(x)),
        F1("cosh", std::cosh(x)),
        F1("exp", elementary::exp(x)),
        D2("expon", d_expon),
        D3("extreme", d_extreme),
        D3("f", d_f),
        D2("gamma", d_gamma),
        D2("geom", d_geom),
        {"hypot", 2, [](const double* v) { return std::hypot(v[0], v[1]); }},
        D3("ibeta", i_beta),
        D3("ibinom", i_binom),
        D3("icauchy", i_cauchy),
        D2("ichi2", i_chi2),
        D2("iexpon", i_expon),
        D3("iextreme", i_extreme),
        D3("if", i_f),
        D2("igamma", i_gamma),
        D2("igeom", i_geom),
        D3("ilaplace", i_laplace),
        D3("ilogis", i_logis),
        D3("ilognorm", i_lognorm),
        D3("inormal", i_normal),
        F1("invinorm", bad_to_nan(invnrm(x, 1000))),
        D2("ipareto", i_pareto),
        D2("ipoisson", i_poisson),
        D2("irayl", i_rayleigh),
        D2("istudent", i_student),
        D4("iweibull", i_weibull),
        D3("laplace", d_laplace),
        F1("log", elementary::log(x)),
        F1("log10", std::log10(x)),
        F1("log2", std::log10(x) / std::log10(2.0)),
        D3("logis", d_logis),
        D3("lognorm", d_lognorm),
        {"max", 2, [](const double* v) { return v[1] > v[0] ? v[1] : v[0]; }},
        {"min", 2, [](const double* v) { return v[1] < v[0] || std::isnan(v[0]) || std::isnan(v[1]) ? v[1] : v[0]; }},
        D3("normal", d_normal),
        D2("pareto", d_pareto),
        D2("poisson", d_poisson),
        D2("rayl", d_rayleigh),
        F1("sign", x > 0   ? 1.0
                   : x < 0 ? -1.0
                           : 0.0),
        F1("sin", elementary::sin(x)),
        F1("sinh", std::sinh(x)),
        F1("sqrt", std::sqrt(x)),
        D2("student", d_student),
        F1("tan", elementary::tan(x)),
        F1("tanh", std::tanh(x)),
        F1("trunc", x >= 0 ? std::floor(x) : std::ceil(x)),
        D3("vbeta", v_beta),
        D3("vcauchy", v_cauchy),
        D2("vchi2", v_chi2),
        D2("vexpon", v_expon),
        D3("vextreme", v_extreme),
        D3("vf", v_f),
        D2("vgamma", v_gamma),
        D3("vlaplace", v_laplace),
        D3("vlogis", v_logis),
        D3("vlognorm", v_lognorm),
        D3("vnormal", v_normal),
        D2("vpareto", v_pareto),
        D2("vrayl", v_rayleigh),
        D2("vstudent", v_student),
        D4("vweibull", v_weibull),
        D4("weibull", d_weibull),
    };
    return s_named;
}

int level(int code)
{
    if (code == 0)
        return 6;
    if (code == 1 || code == 2 || code == 13 || code == 17 || code == 20)
        return 5;
    if (code == 3 || code == 4)
        return 4;
    if (code >= 5 && code <= 10)
        return 3;
    return code == 11 ? 2 : code == 12 ? 1 : 0;
}

class Interpreter {
public:
    Interpreter(const std::string& formula, const Settings& settings, const std::vector<double>& values, bool checking)
        : m_text(formula), m_settings(settings), m_values(values), m_checking(checking)
    {
        m_signs[16] = settings.list;
        m_breaks[14] = settings.list;
    }

    Answer run()
    {
        Answer answer;
        try {
            answer.value = pass();
            answer.good = true;
            const double magnitude = std::fabs(answer.value);
            if (std::isinf(magnitude) || (magnitude > 0 && magnitude < std::numeric_limits<double>::min()))
                answer.value = s_nan;
        } catch (const Failure& failure) {
            answer.error = failure.code;
            answer.position = static_cast<int>(m_error - m_start);
        }
        return answer;
    }

private:
    char at(std::size_t i) const { return i < m_text.size() ? m_text[i] : '\0'; }
    bool begins(const char* word) const { return m_text.compare(m_cursor, std::strlen(word), word) == 0; }
    bool is_break(char c) const { return c != '\0' && std::strchr(m_breaks, c) != nullptr; }
    static bool is_blank(char c) { return c != '\0' && std::strchr(" \t\n\v\f\r", c) != nullptr; }
    void skip_blanks()
    {
        while (is_blank(at(m_cursor)))
            ++m_cursor;
    }

    void push_operator(int code)
    {
        if (m_operators.size() == 32)
            throw Failure{4};
        m_operators.push_back(code);
    }
    int pop_operator()
    {
        if (m_operators.empty())
            throw Failure{4};
        const int code = m_operators.back();
        m_operators.pop_back();
        return code;
    }
    int top() const { return m_operators.empty() ? -1 : m_operators.back(); }
    void push(double v)
    {
        if (m_numbers.size() == 32)
            throw Failure{4};
        m_numbers.push_back(m_checking ? 1.0 : v);
    }
    double pop()
    {
        if (m_numbers.empty())
            throw Failure{4};
        const double v = m_numbers.back();
        m_numbers.pop_back();
        return v;
    }

    void reduce()
    {
        const int code = pop_operator();
        if (code >= 14 && code <= 16)
            throw Failure{4};
        if (code == 17)
            return push(-pop());
        if (code == 13) {
            const double a = pop();
            return push(truth(!holds(a)));
        }
        if (code < 13)
            return reduce_binary(code);
        if (code == 18) {
            const double n = std::trunc(pop());
            return push(truth(n == m_settings.graph + 1.0));
        }
        if (code == 19) {
            const double column = std::trunc(pop()) - 1, row = std::trunc(pop()) - 1;
            if (m_settings.graph_mode != 2)
                return push(truth(row == m_settings.graph));
            if (m_settings.graph_columns == 0)
                return push(0);
            return push(truth(row == m_settings.graph / m_settings.graph_columns &&
                              column == m_settings.graph % m_settings.graph_columns));
        }
        const Named& function = named()[static_cast<std::size_t>(code - 20)];
        const int count = std::abs(function.count);
        double values[4];
        for (int i = count; i-- > (m_checking && function.count < 0 ? 1 : 0);)
            values[i] = pop();
        if (!m_checking)
            push(function.call(values));
        else if (function.count > 0)
            push(1.0);
    }

    void reduce_binary(int code)
    {
        const double b = pop();
        if (m_checking && (code == 0 || code == 2))
            return;
        const double a = pop();
        const bool unordered = std::isnan(a) || std::isnan(b);
        switch (code) {
        case 0: return push(qmml::elementary::pow(a, b));
        case 1: return push(a * b);
        case 2: return push(a / b);
        case 3: return push(a + b);
        case 4: return push(a - b);
        case 5: return push(truth(unordered || a == b));
        case 6: return push(truth(a > b));
        case 7: return push(truth(a >= b));
        case 8: return push(truth(unordered || a < b));
        case 9: return push(truth(unordered || a <= b));
        case 10: return push(truth(!unordered && a != b));
        case 11: return push(truth(holds(a) && holds(b)));
        default: return push(truth(holds(a) || holds(b)));
        }
    }

    int number()
    {
        std::size_t end = m_cursor;
        const auto digits = [&] {
            while (at(end) >= '0' && at(end) <= '9')
                ++end;
        };
        digits();
        if (at(end) == '.') {
            ++end;
            digits();
        }
        if (end == m_cursor + 1 && at(m_cursor) == '.')
            end = m_cursor;
        if (end > m_cursor && (at(end) == 'e' || at(end) == 'E')) {
            const std::size_t mantissa = end++;
            if (at(end) == '+' || at(end) == '-')
                ++end;
            const std::size_t first = end;
            digits();
            if (end == first)
                end = mantissa;
        }
        const std::string text = m_text.substr(m_cursor, end - m_cursor);
        push(text.empty() ? 0.0 : std::strtod(text.c_str(), nullptr));
        m_cursor = end;
        if (at(end) != '\0' && !is_break(at(end))) {
            m_error = end;
            throw Failure{3};
        }
        return 21;
    }

    int identifier()
    {
        std::size_t end = m_cursor;
        while (at(end) != '\0' && !is_break(at(end)))
            ++end;
        std::string name = m_text.substr(m_cursor, std::min<std::size_t>(end - m_cursor, 10));
        for (char& c : name)
            c = c >= 'A' && c <= 'Z' ? static_cast<char>(c + 32) : c;
        const std::size_t begin = m_cursor;
        m_cursor = end;
        for (std::size_t i = 0; i < named().size(); ++i)
            if (name == named()[i].name) {
                push_operator(20 + static_cast<int>(i));
                return 20;
            }
        if (name == "euler" || name == "pi") {
            push(name == "pi" ? 3.1415926 : 2.7182818);
            return 21;
        }
        static const std::string s_letters = "xyz";
        if (m_settings.variables == -1 && name == "t") {
            push(m_values.empty() ? 0 : m_values[0]);
            return 21;
        }
        for (int v = 0; v < m_settings.variables; ++v)
            if (name == s_letters.substr(static_cast<std::size_t>(v), 1)) {
                push(m_values.empty() ? 0 : m_values[static_cast<std::size_t>(v)]);
                return 21;
            }
        if (begin != m_text.find_first_not_of(" \t\n\v\f\r"))
            throw Failure{1};
        const std::size_t equals = m_text.find('=', end);
        m_cursor = equals == std::string::npos ? m_text.size() : equals + 1;
        return 100;
    }

    int token()
    {
        if (begins("**")) {
            m_cursor += 2;
            return 0;
        }
        if (const char* sign = std::strchr(m_signs, at(m_cursor)); sign != nullptr) {
            const int code = static_cast<int>(sign - m_signs);
            if (code == 5 && m_cursor == 0) {
                ++m_cursor;
                return 100;
            }
            if (begins(">=") || begins("<=") || begins("<>")) {
                const int relation = begins(">=") ? 7 : begins("<=") ? 9 : 10;
                m_cursor += 2;
                return relation;
            }
            ++m_cursor;
            return code;
        }
        const std::pair<const char*, int> words[] = {{"and", 11}, {"or", 12}, {"not", 13}, {"ifgraph", 20}};
        for (const auto& [word, code] : words)
            if (begins(word)) {
                m_cursor += std::strlen(word);
                if (code == 20)
                    push_operator(18);
                return code;
            }
        const char c = at(m_cursor);
        return (c >= '0' && c <= '9') || c == m_settings.decimal ? number() : identifier();
    }

    void check_token(int tok)
    {
        if (!m_checking)
            return;
        const int next = tok == 14              ? 1
                         : tok == 21            ? 2
                         : tok == 20            ? 3
                         : tok == 3 || tok == 4 ? 4
                         : tok == 15            ? 6
                         : tok == 16            ? 7
                         : tok == 13            ? 8
                                                : 5;
        static const char* const s_allowed[] = {"", "12348", "4567", "1", "1238", "12348", "4567", "12348", "12348"};
        if (std::strchr(s_allowed[m_state], '0' + next) == nullptr)
            throw Failure{4};
        m_state = next;
    }

    double pass()
    {
        std::size_t p = 0;
        while (is_blank(at(p)))
            ++p;
        if (at(p) == '\0')
            throw Failure{0};
        for (int previous = -1;;) {
            skip_blanks();
            m_error = m_cursor;
            const char c = at(m_cursor);
            if (c == '\0' || begins("//") || (c == ';' && m_settings.list != ';'))
                break;
            const int tok = token();
            const bool sign_is_unary =
                previous == 14 || previous == 16 || previous == 100 || previous == -1 || previous < 13;
            if (tok == 0 || tok == 13 || tok == 14)
                push_operator(tok);
            else if ((tok == 3 || tok == 4) && sign_is_unary) {
                if (tok == 4)
                    push_operator(17);
            } else if (tok >= 1 && tok <= 12) {
                while (level(top()) >= level(tok))
                    reduce();
                push_operator(tok);
            } else if (tok == 15) {
                while (top() != 14)
                    reduce();
                pop_operator();
                if (top() == 17 || top() >= 18)
                    reduce();
            } else if (tok == 16) {
                while (top() != 14)
                    reduce();
                if (m_operators.size() >= 2 && m_operators[m_operators.size() - 2] == 18)
                    m_operators[m_operators.size() - 2] = 19;
            }
            previous = tok;
            if (tok == 100) {
                skip_blanks();
                m_start = m_cursor;
                continue;
            }
            check_token(tok);
        }
        while (!m_operators.empty())
            reduce();
        const double value = pop();
        if (m_checking && !m_numbers.empty())
            throw Failure{4};
        return value;
    }

    const std::string& m_text;
    const Settings& m_settings;
    const std::vector<double>& m_values;
    const bool m_checking;
    char m_signs[18] = "^*/+-=>=<=>&|~(),";
    char m_breaks[17] = " \t\r\n^*/+-=><(),;";
    std::size_t m_cursor = 0, m_start = 0, m_error = 0;
    std::vector<int> m_operators;
    std::vector<double> m_numbers;
    int m_state = 1;
};

} // namespace

Answer evaluate(const std::string& formula, const Settings& settings, const std::vector<double>& values)
{
    return Interpreter(formula, settings, values, false).run();
}

Answer check(const std::string& formula, const Settings& settings)
{
    return Interpreter(formula, settings, {}, true).run();
}

} // namespace naive
