// Formulas under traps: what the host has unmasked makes a value missing and never ends the process.
#include "platform/float_guard.h"

#include <bit>
#include <cfenv>
#include <cmath>
#include <cstdint>
#include <gtest/gtest.h>
#include <qmml/interp.h>
#include <vector>
#include <xmmintrin.h>

namespace {

// Unmasks faults for a scope, as the C library does or in MXCSR alone.
class Traps {
public:
    explicit Traps(unsigned faults, bool mxcsr_only = false) : m_mxcsr(_mm_getcsr())
    {
        std::fegetenv(&m_environment);
        std::feclearexcept(FE_ALL_EXCEPT);
        if (!mxcsr_only)
            feenableexcept(static_cast<int>(faults));
        _mm_setcsr(_mm_getcsr() & ~(faults << 7) & ~0x3fu);
    }
    ~Traps()
    {
        std::fesetenv(&m_environment);
        _mm_setcsr(m_mxcsr);
    }

private:
    std::fenv_t m_environment;
    unsigned m_mxcsr;
};

constexpr unsigned s_serious = FE_INVALID | FE_DIVBYZERO | FE_OVERFLOW;

struct Outcome {
    int good;
    std::uint64_t bits;
    unsigned masks;
};

Outcome under_traps(const char* formula, double x, unsigned faults, bool mxcsr_only)
{
    ExInterpreter interpreter(formula, 1);
    double result = 0.0;
    interpreter.ExpresCheck();
    int good;
    unsigned masks;
    {
        const Traps traps(faults, mxcsr_only);
        good = interpreter.ExpresVal(&result, x);
        masks = _mm_getcsr() & 0x1f80u;
    }
    return {good, std::bit_cast<std::uint64_t>(result), masks};
}

TEST(FormulaUnderTraps, MakesFaultsMissingEvenWhereTheRestHidesThem)
{
    for (const char* formula : {"1/0", "1/(1/0)", "max(1,1/0)", "1/(1/x)", "max(1,log(x))", "1/(exp(x+1000))",
                                "(x*1e308*1e308)&0", "max(1,sqrt(x-1))", "max(0,normal(x,0,0))", "1 & (sin(1/x))"})
        for (const bool mxcsr_only : {false, true}) {
            const auto outcome = under_traps(formula, formula[1] == 'x' ? 1e5 : 0.0, s_serious, mxcsr_only);
            EXPECT_EQ(outcome.good, 1) << formula;
            EXPECT_EQ(outcome.bits, 0x7ff8000000000000u) << formula;
            EXPECT_EQ(outcome.masks, 0x1f80u & ~(s_serious << 7)) << formula;
        }
}

TEST(FormulaUnderTraps, KeepsValuesThatRaiseNothingOfTheKind)
{
    const struct {
        const char* formula;
        double value;
    } s_cases[] = {{"x+1", 1.0},     {"1/3*3", 1.0},       {"x=0/1", 1.0},
                   {"exp(-x)", 1.0}, {"exp(-800)+1", 1.0}, {"max(1,vcauchy(x,0,0))", 1.0}};
    for (const auto& c : s_cases)
        for (const bool mxcsr_only : {false, true}) {
            const auto outcome = under_traps(c.formula, 0.0, s_serious, mxcsr_only);
            EXPECT_EQ(outcome.good, 1) << c.formula;
            EXPECT_EQ(std::bit_cast<double>(outcome.bits), c.value) << c.formula;
        }
}

TEST(FormulaUnderTraps, ComparesMissingValuesQuietly)
{
    const double signalling = std::bit_cast<double>(std::uint64_t{0x7ff0000000000001u});
    for (const double nan : {std::nan(""), signalling}) {
        for (const char* formula :
             {"(x=1)+1", "(x<1)+1", "(x>=1)+2", "max(2,x)", "sign(x)+2", "(not x)+1", "min(x,2)", "(-x>abs(x))+2"}) {
            const auto outcome = under_traps(formula, nan, s_serious, false);
            EXPECT_EQ(std::bit_cast<double>(outcome.bits), 2.0) << formula;
        }
    }
    for (const char* formula : {"max(1,(0*0/0)*x)", "max(1,x+1)", "max(1,x-1)"})
        EXPECT_EQ(under_traps(formula, signalling, FE_INVALID, false).bits, 0x7ff8000000000000u) << formula;
}

// A fault in front of a formula error comes first, one behind it does not come at all.
TEST(FormulaUnderTraps, OrdersFaultsAndErrorsAsTheyStandInTheText)
{
    EXPECT_EQ(under_traps("1/0+1+q", 0.0, s_serious, false).good, 1);
    EXPECT_EQ(under_traps("1+q+1/0", 0.0, s_serious, false).good, 0);
    EXPECT_EQ(under_traps("1/0+1+q", 0.0, FE_OVERFLOW, false).good, 0);
}

TEST(FormulaUnderTraps, SurvivesEveryTrapInColumnsToo)
{
    std::vector<double> x(700), result(700, 0.0);
    for (std::size_t i = 0; i < x.size(); ++i)
        x[i] = static_cast<double>(i % 7);
    const double* const columns[] = {x.data()};
    ExInterpreter interpreter("max(1,6/x)+exp(x)", 1);
    int evaluated;
    {
        const Traps traps(s_serious);
        evaluated = interpreter.ExpresColumn(result.data(), 700, columns);
    }
    EXPECT_EQ(evaluated, 700);
    for (std::size_t i = 0; i < x.size(); ++i)
        EXPECT_EQ(std::isnan(result[i]), x[i] == 0) << i;
    {
        const Traps traps(FE_ALL_EXCEPT);
        evaluated = interpreter.ExpresColumn(result.data(), 700, columns);
        interpreter.ExpresVal(&result[0], 0.1);
    }
    EXPECT_EQ(evaluated, 700);
}

} // namespace
