// Random formulas, from a grammar and from a heap of tokens, against the naive evaluator.
#include "interp/naive_evaluator.h"

#include <bit>
#include <cmath>
#include <cstdint>
#include <gtest/gtest.h>
#include <qmml/interp.h>
#include <qmml/platform.h>
#include <random>
#include <string>
#include <vector>

namespace {

class Generator {
public:
    explicit Generator(unsigned seed, char list) : m_random(seed), m_list(1, list) {}

    int below(int n) { return static_cast<int>(m_random() % static_cast<unsigned>(n)); }
    template <std::size_t N>
    std::string one_of(const char* const (&texts)[N])
    {
        return texts[below(static_cast<int>(N))];
    }

    std::string number() { return one_of(s_numbers); }

    std::string expression(int depth)
    {
        if (depth == 0 || below(5) == 0)
            return one_of(s_atoms);
        switch (below(10)) {
        case 0: return "(" + expression(depth - 1) + ")";
        case 1: return "-" + expression(depth - 1);
        case 2: return one_of(s_one) + "(" + expression(depth - 1) + ")";
        case 3: return one_of(s_two) + "(" + expression(depth - 1) + m_list + expression(depth - 1) + ")";
        case 4:
            return one_of(s_three) + "(" + expression(depth - 1) + m_list + expression(depth - 1) + m_list +
                   expression(depth - 1) + ")";
        case 5: return "(" + expression(depth - 1) + ") " + one_of(s_operators) + " (" + expression(depth - 1) + ")";
        default: return expression(depth - 1) + " " + one_of(s_operators) + " " + expression(depth - 1);
        }
    }

    std::string heap_of_tokens()
    {
        std::string text;
        for (int n = below(14); n >= 0; --n) {
            switch (below(7)) {
            case 0: text += one_of(s_atoms); break;
            case 1: text += one_of(s_operators); break;
            case 2: text += one_of(s_pieces); break;
            case 3: text += one_of(s_one); break;
            case 4: text += one_of(s_two); break;
            case 5: text += "("; break;
            default: text += ")";
            }
            if (below(3) == 0)
                text += ' ';
        }
        return text;
    }

    // One character put in, taken out or changed.
    std::string damaged(std::string text)
    {
        const auto at = static_cast<std::size_t>(below(static_cast<int>(text.size()) + 1));
        static const char s_characters[] = " ()+-*/^=<>&|~,;.0e9xyzabc\t\n\x80";
        const char c = s_characters[below(static_cast<int>(sizeof s_characters) - 1)];
        if (below(2) == 0)
            text.insert(at, 1, c);
        else if (at < text.size())
            text.erase(at, 1);
        return text;
    }

private:
    static constexpr const char* s_numbers[] = {"0", "1", "2", "0.5", "3e2", ".25", "7.", "1e-3"};
    static constexpr const char* s_atoms[] = {"x",   "y",   "z",   "X",    "0",  "1", "2",
                                              "0.5", "3e2", ".25", "1e-3", "pi", "t", "1e308"};
    static constexpr const char* s_operators[] = {"+", "-",  "*",  "/",  "^", "**", "=",   "<",
                                                  ">", "<=", ">=", "<>", "&", "|",  "and", "or"};
    static constexpr const char* s_pieces[] = {",", ";",    "~",  "not ", "=",     "//",   "ifgraph",
                                               "q", "V1 =", "2a", "..",   "order", "\x01", "\xc3\xa9"};
    static constexpr const char* s_one[] = {"abs",   "sin", "Cos",    "exp",  "log",      "sqrt",   "sign",
                                            "trunc", "not", "arctan", "tanh", "invinorm", "ifgraph"};
    static constexpr const char* s_two[] = {"min", "max", "hypot", "ichi2", "expon", "ifgraph", "ipoisson", "vexpon"};
    static constexpr const char* s_three[] = {"normal", "inormal", "ibeta", "vlogis", "cauchy", "binom"};

    std::mt19937 m_random;
    const std::string m_list;
};

bool same(double a, double b)
{
    return (std::isnan(a) && std::isnan(b)) || std::bit_cast<std::uint64_t>(a) == std::bit_cast<std::uint64_t>(b);
}

void compare(const std::string& formula, const naive::Settings& settings, const std::vector<double>& values)
{
    SCOPED_TRACE("\"" + formula + "\"");
    ExInterpreter interpreter(formula.c_str(), settings.variables);
    interpreter.SetIfgraphMode(settings.graph_mode, settings.graph_columns);
    interpreter.SetIfgraphGraph(settings.graph);
    const auto expected = naive::evaluate(formula, settings, values);
    for (int repeat = 0; repeat < 2; ++repeat) { // the second call replays the first one's program
        double result = 0.0;
        ASSERT_EQ(interpreter.ExpresVal(&result, values[0], values[1], values[2]), expected.good ? 1 : 0);
        if (expected.good) {
            ASSERT_TRUE(same(result, expected.value)) << result << " instead of " << expected.value;
        } else {
            ASSERT_TRUE(std::isnan(result));
            ASSERT_EQ(interpreter.GetInterpreterError(), expected.error);
            ASSERT_EQ(interpreter.GetInterpreterErrorPos(), expected.position);
        }
    }
    const auto checked = naive::check(formula, settings);
    ASSERT_EQ(interpreter.ExpresCheck(), checked.good ? 1 : 0);
    if (!checked.good) {
        ASSERT_EQ(interpreter.GetInterpreterError(), checked.error);
        ASSERT_EQ(interpreter.GetInterpreterErrorPos(), checked.position);
    }
}

void compare_many(const naive::Settings& settings, unsigned seed)
{
    QMMLSetSeparators(settings.decimal, settings.list);
    Generator generator(seed, settings.list);
    std::mt19937 random(seed + 1);
    const double s_values[] = {0.0,   -0.0,  1.0,    -1.0,         0.3,      2.5,       -7.25,  40.0,    1e10,
                               -1e-5, 1e300, 5e-324, std::nan(""), HUGE_VAL, -HUGE_VAL, 0x1p64, 0x1p-65, 1e200};
    int good = 0;
    for (int i = 0; i < 6000; ++i) {
        std::string formula = i % 3 == 2 ? generator.heap_of_tokens() : generator.expression(1 + i % 5);
        if (i % 3 == 1)
            formula = generator.damaged(formula);
        std::vector<double> values(3);
        for (double& v : values)
            v = s_values[random() % std::size(s_values)];
        compare(formula, settings, values);
        if (testing::Test::HasFatalFailure())
            return;
        good += naive::check(formula, settings).good;
    }
    EXPECT_GT(good, 900); // the comparison is not one of errors alone
    QMMLSetSeparators(0, 0);
}

TEST(RandomFormulas, AgreeWithTheNaiveEvaluator)
{
    compare_many({}, 1);
}

TEST(RandomFormulas, AgreeUnderOtherSeparatorsVariablesAndGraphs)
{
    compare_many({.variables = 2, .decimal = ',', .list = ';', .graph_mode = 2, .graph_columns = 2, .graph = 1}, 2);
    compare_many({.variables = -1, .decimal = '.', .list = '|', .graph_mode = 1, .graph_columns = 0, .graph = 0}, 3);
}

} // namespace
