// The language and its errors, case by case.
#include <bit>
#include <cmath>
#include <cstdint>
#include <gtest/gtest.h>
#include <qmml/core.h>
#include <qmml/interp.h>
#include <qmml/platform.h>
#include <string>

namespace {

constexpr double s_x = 3.0, s_y = 0.5, s_z = -2.0;

struct ValueCase {
    const char* formula;
    double value;
};

class Separators {
public:
    Separators(char decimal, char list) { QMMLSetSeparators(decimal, list); }
    ~Separators() { QMMLSetSeparators(0, 0); }
};

double value_of(const char* formula, int variables = 3)
{
    ExInterpreter interpreter(formula, variables);
    double result = 0.0;
    EXPECT_EQ(interpreter.ExpresVal(&result, s_x, s_y, s_z), 1)
        << formula << ": " << interpreter.GetInterpreterErrorDescr();
    return result;
}

TEST(Formula, HasTheValueThatItsPrioritiesGive)
{
    const Separators plain('.', ',');
    static const ValueCase s_cases[] = {
        {"2^3^2", 512},
        {"2**3", 8},
        {"-2^2", -4},
        {"-(2)^2", 4},
        {"1+-2", -1},
        {"+1", 1},
        {"2*-3", -6},
        {"2--3", 5},
        {"1 2", 2},
        {"7-2-1", 4},
        {"2+3*4", 14},
        {"(2+3)*4", 20},
        {"8/4/2", 1},
        {"1 < 2 < 0", 0},
        {"1=1 & 0 | 1", 1},
        {"~0 & 1", 1},
        {"not 0.5", 0},
        {"1 or 0 and 0", 1},
        {"x <> 3", 0},
        {"x>=3", 1},
        {"V1 = x+1", 4},
        {"= x+1", 4},
        {"V1 = = 3", 0.0 / 0.0}, // the second "=" is a relation without a left operand
        {"SIN(0)+Abs(-2)", 2},
        {"x // 1+2", 3},
        {"x;y", 3},
        {"pi", 3.1415926},
        {"EULER", 2.7182818},
        {"trunc(-2.7)", -2},
        {"sign(-0)", 0},
        {"min(1, 2)+max(3, 4)*10", 41},
        {"hypot(x, 4)", 5},
        {"1e2+.5+2.", 102.5},
        {"1e-400", 0},
        {"000000000000000000001", 1},
        {"abs 2 - 5", -3}, // of the functions only abs binds like a factor
        {"inormal(0,0,1)", 0.5},
        {"log2(8)", 3},
        {"2;q", 2},
    };
    for (const auto& c : s_cases) {
        if (std::isnan(c.value)) {
            ExInterpreter interpreter(c.formula, 3);
            double result = 1.0;
            EXPECT_EQ(interpreter.ExpresVal(&result, s_x, s_y, s_z), 0) << c.formula;
            EXPECT_TRUE(std::isnan(result)) << c.formula;
            continue;
        }
        EXPECT_DOUBLE_EQ(value_of(c.formula), c.value) << c.formula;
    }
}

TEST(Formula, TreatsMissingValuesAsItsTablesSay)
{
    const Separators plain('.', ',');
    static const ValueCase s_cases[] = {
        {"(x=x)", 1}, {"x<>x", 0},  {"x<1", 1},      {"x<=1", 1}, {"x>1", 0},      {"x>=1", 0},      {"x & 1", 0},
        {"x | 1", 1}, {"x | 0", 0}, {"not x", 1},    {"~x", 1},   {"max(1,x)", 1}, {"min(x,1)", 1},  {"sign(x)", 0},
        {"x | x", 0}, {"1 & x", 0}, {"not(x=1)", 0}, {"x=1", 1},  {"not(x>1)", 1}, {"not(x<=1)", 0}, {"not(x<>1)", 1},
    };
    for (const auto& c : s_cases) {
        ExInterpreter interpreter(c.formula, 1);
        double result = 7.0;
        ASSERT_EQ(interpreter.ExpresVal(&result, std::nan("")), 1) << c.formula;
        EXPECT_EQ(result, c.value) << c.formula;
    }
    EXPECT_TRUE(std::isnan(value_of("min(1, 0/0)")));
    EXPECT_TRUE(std::isnan(value_of("max(0/0, 1)")));
}

TEST(Formula, MakesInfiniteDenormalAndRejectedOutcomesMissing)
{
    const Separators plain('.', ',');
    for (const char* formula :
         {"1/0", "-1/0", "1e400", "exp(1000)", "1e-310", "-1e-310", "exp(-740)", "log(0)", "sqrt(-1)", "inormal(1,0,0)",
          "1e308*10", "2^1024", "0/0", "vbeta(0.5,-1,2)", "log(-1)"})
        EXPECT_TRUE(std::isnan(value_of(formula))) << formula;
    for (const char* formula : {"sqrt(1e400)", "-sqrt(1e400)", "log(1e400)", "max(x,sqrt(1e400))"})
        EXPECT_TRUE(std::isnan(value_of(formula))) << formula;
    EXPECT_EQ(value_of("log(1e400)>1000"), 1.0);
    EXPECT_DOUBLE_EQ(value_of("log(3e-320)"), std::log(3e-320));
    EXPECT_EQ(value_of("1/(1/0)"), 0.0);
    EXPECT_TRUE(std::signbit(value_of("-0")));
}

struct ErrorCase {
    const char* formula;
    int code, position;
    bool check_only = false;
};

TEST(Formula, ReportsErrorsWithCodePositionAndFrenchText)
{
    const Separators plain('.', ',');
    static const char* const s_texts[] = {"Expression vide", "Identifiant inconnu", "Parenthèse seule",
                                          "Séparateur attendu", "Erreur numérique ou de syntaxe"};
    static const ErrorCase s_cases[] = {
        {"", 0, 0},
        {" \t", 0, 0},
        {"//x", 4, 0},
        {";", 4, 0},
        {"x + q", 1, 4},
        {"q + 1", 4, 0},
        {"V = q", 1, 0},
        {"V =  2 + q", 1, 4},
        {"2a", 3, 1},
        {"1.2.3", 3, 3},
        {"x+2&1", 3, 3},
        {"order", 1, 2},
        {"note", 1, 3},
        {"(", 4, 1},
        {")", 4, 0},
        {"(1", 4, 2},
        {"1)", 4, 1},
        {"1+", 4, 2},
        {"normal(1,2)", 4, 10},
        {"max(1;2)", 4, 5},
        {"1+x&y", 1, 2},
        {"x => 1", 4, 3},
        {"2*", 4, 2},
        {"0x10", 3, 1},
        {"2e", 3, 1},
        {"x+1e+", 3, 3},
        {"T+1", 4, 0},
        {"1,2", 4, 1},
        {"inf+1", 4, 0},
        {"1 2", 4, 2, true},
        {"1 +- 2", 4, 3, true},
        {"sin 1", 4, 4, true},
        {"sin", 4, 3, true},
        {"normal(1,2)", 4, 11, true},
        {"(1", 4, 2, true},
        {"+-1", 4, 1, true},
    };
    for (const auto& c : s_cases) {
        SCOPED_TRACE(c.formula);
        ExInterpreter interpreter(c.formula, 3);
        double result = 1.0;
        const int good = c.check_only ? interpreter.ExpresCheck() : interpreter.ExpresVal(&result, s_x, s_y, s_z);
        EXPECT_EQ(good, 0);
        EXPECT_EQ(interpreter.GetInterpreterError(), c.code);
        EXPECT_EQ(interpreter.GetInterpreterErrorPos(), c.position);
        EXPECT_STREQ(interpreter.GetInterpreterErrorDescr(), s_texts[c.code]);
    }
}

TEST(Formula, LeavesTheOldBitsUnderAnErrorsMissingValue)
{
    ExInterpreter interpreter("x +", 1);
    double result = -2.5;
    EXPECT_EQ(interpreter.ExpresVal(&result, 1.0), 0);
    EXPECT_EQ(std::bit_cast<std::uint64_t>(result), std::bit_cast<std::uint64_t>(-2.5) | 0x7ff8000000000000u);
}

TEST(Formula, ClearsTheErrorOfTheCallBefore)
{
    const Separators plain('.', ',');
    ExInterpreter interpreter("1 2", 3);
    double result = 0;
    EXPECT_EQ(interpreter.ExpresCheck(), 0);
    EXPECT_EQ(interpreter.GetInterpreterError(), 4);
    EXPECT_EQ(interpreter.ExpresVal(&result, s_x, s_y, s_z), 1);
    EXPECT_EQ(interpreter.GetInterpreterError(), 0);
    EXPECT_STREQ(interpreter.GetInterpreterErrorDescr(), "");
    EXPECT_EQ(interpreter.ExpresVal(nullptr, 1.0, 1.0), 0);
    EXPECT_EQ(interpreter.GetInterpreterErrorPos(), 2);
}

TEST(Formula, KnowsTheVariablesThatItsSelectorNames)
{
    const struct {
        const char* formula;
        int variables;
        bool known;
    } s_cases[] = {{"1+x", 0, false},
                   {"1+x", 1, true},
                   {"1+y", 1, false},
                   {"1+y", 2, true},
                   {"1+z", 2, false},
                   {"1+z", 3, true},
                   {"1+t", 3, false},
                   {"1+T", -1, true},
                   {"1+x", -1, false},
                   {"1+y", -2, true},
                   {"1+z", -3, true},
                   {"1+z", 99, true},
                   {"1+z", -2147483647 - 1, true}};
    for (const auto& c : s_cases) {
        ExInterpreter interpreter(c.formula, c.variables);
        double result = 0;
        EXPECT_EQ(interpreter.ExpresVal(&result, 1.0, 2.0, 3.0), c.known ? 1 : 0) << c.formula << ' ' << c.variables;
    }
}

TEST(Formula, UsesTheSeparatorsOfItsConstruction)
{
    double result = 0;
    const Separators comma(',', ';');
    ExInterpreter made("max(1;2)+1.5", 3);
    QMMLSetSeparators('.', ',');
    EXPECT_EQ(made.ExpresVal(&result, s_x, s_y, s_z), 1);
    EXPECT_EQ(result, 3.5);
    ExInterpreter copy(made);
    EXPECT_EQ(copy.ExpresVal(&result, s_x, s_y, s_z), 1);

    QMMLSetSeparators(',', ';');
    const ErrorCase s_cases[] = {{"max(1,2)", 3, 5}, {"1+.5", 1, 2}, {"1,5", 3, 1}, {"1;2", 4, 1}};
    for (const auto& c : s_cases) {
        ExInterpreter interpreter(c.formula, 3);
        EXPECT_EQ(interpreter.ExpresVal(&result, s_x, s_y, s_z), 0) << c.formula;
        EXPECT_EQ(interpreter.GetInterpreterError(), c.code) << c.formula;
        EXPECT_EQ(interpreter.GetInterpreterErrorPos(), c.position) << c.formula;
    }
}

TEST(Formula, SelectsGraphsByTheSettingsOfTheObject)
{
    const Separators plain('.', ',');
    double result = 0;
    const auto value = [&](ExInterpreter& interpreter) {
        EXPECT_EQ(interpreter.ExpresVal(&result, 1.0, 1.0, 1.0), 1);
        return result;
    };
    ExInterpreter one("ifgraph(2.9)", 1), two("ifgraph(2,2)", 1);
    EXPECT_EQ(value(one), 0);
    one.SetIfgraphGraph(1);
    EXPECT_EQ(value(one), 1);
    ExInterpreter copy(one);
    EXPECT_EQ(value(copy), 1);
    two.SetIfgraphGraph(1);
    EXPECT_EQ(value(two), 1); // any mode but 2 compares the row alone
    two.SetIfgraphMode(2, 3);
    EXPECT_EQ(value(two), 0);
    two.SetIfgraphGraph(4);
    EXPECT_EQ(value(two), 1);
    two.SetIfgraphMode(2, 0);
    EXPECT_EQ(value(two), 0);
}

TEST(Formula, LimitsPendingOperatorsAndOperandsToThirtyTwo)
{
    const auto nested = [](int n) {
        return std::string(static_cast<std::size_t>(n), '(') + "x" + std::string(static_cast<std::size_t>(n), ')');
    };
    double result = 0;
    EXPECT_EQ(ExInterpreter(nested(32).c_str(), 1).ExpresVal(&result, 5.0), 1);
    EXPECT_EQ(result, 5.0);
    ExInterpreter deep(nested(33).c_str(), 1);
    EXPECT_EQ(deep.ExpresVal(&result, 5.0), 0);
    EXPECT_EQ(deep.GetInterpreterError(), 4);
    EXPECT_EQ(deep.GetInterpreterErrorPos(), 32);

    std::string operands;
    for (int i = 0; i < 32; ++i)
        operands += "1 ";
    EXPECT_EQ(ExInterpreter(operands.c_str(), 1).ExpresVal(&result, 5.0), 1);
    ExInterpreter many((operands + "2a").c_str(), 1); // pushed before it is seen to be no number
    EXPECT_EQ(many.ExpresVal(&result, 5.0), 0);
    EXPECT_EQ(many.GetInterpreterError(), 4);
    EXPECT_EQ(many.GetInterpreterErrorPos(), 64);
}

TEST(FormulaHandle, GivesWhatTheClassGives)
{
    QmmlFormula* formula = QMMLFormulaNew("x + y", 2);
    ASSERT_NE(formula, nullptr);
    const double values[] = {1.0, 2.0};
    double result = 0;
    EXPECT_EQ(QMMLFormulaCheck(formula), 1);
    EXPECT_EQ(QMMLFormulaEval(formula, &result, values), 1);
    EXPECT_EQ(result, 3.0);
    EXPECT_EQ(QMMLFormulaEval(formula, &result, nullptr), 1);
    EXPECT_TRUE(std::isnan(result));
    QMMLFormulaFree(formula);

    formula = QMMLFormulaNew("x + unknown", 2);
    EXPECT_EQ(QMMLFormulaEval(formula, &result, values), 0);
    EXPECT_EQ(QMMLFormulaError(formula), 1);
    EXPECT_EQ(QMMLFormulaErrorPos(formula), 4);
    EXPECT_STREQ(QMMLFormulaErrorText(formula), "Identifiant inconnu");
    QMMLFormulaFree(formula);

    EXPECT_EQ(QMMLFormulaEval(nullptr, &result, values), 0);
    EXPECT_STREQ(QMMLFormulaErrorText(nullptr), "");
    QMMLFormulaFree(nullptr);
}

} // namespace
