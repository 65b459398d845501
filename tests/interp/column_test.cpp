// Columns: the bits of single calls, at every instruction set, for every length.

#include "platform/levels.h"

#include <algorithm>
#include <bit>
#include <cmath>
#include <cstdint>
#include <gtest/gtest.h>
#include <qmml/interp.h>
#include <random>
#include <vector>

namespace {

// Every inlined operation with constant and varying operands, and some that are called case by case.
constexpr const char* s_formulas[] = {
    "x",
    "2.5",
    "1 2",
    "x+y*2-3/x",
    "sqrt(x^2+y^2)*sin(x)-log(abs(y)+1)",
    "(x>1)&(y<2)|~(x=y)",
    "inormal(x,0,1)*2-exp(-x^2/2)",
    "normal(x,y,2)+normal(x,0.5,2)+inormal(x,1,0)+inormal(x,y,z)",
    "x*y+y*x+(x+y)*(y+x)",
    "2+x-(x-2)+x*3/4-4/x+3*y",
    "(x<y)+(x<=y)*2+(x>y)*4+(x>=y)*8+(x=y)*16+(x<>y)*32",
    "(x<1)+(x<=1)*2+(x>1)*4+(x>=1)*8+(x=1)*16+(x<>1)*32",
    "(1<x)+(1<=x)*2+(1>x)*4+(1>=x)*8+(1=x)*16+(1<>x)*32",
    "min(x,y)+max(x,y)",
    "min(1,x)+max(x,1)",
    "(x & y)+(x | y)*2+(x & 1)*4+(0 | x)*8",
    "-x+abs(y)+sign(x)+trunc(y)",
    "trunc(x)+sqrt(y)",
    "exp(x)+log(y)",
    "exp(x/100)",
    "log(x)",
    "sin(x)+cos(y)",
    "cos(x)",
    "x^y+x^2+2^x+x^0.5",
    "hypot(x,y)+arctan(x)+tan(y)",
    "ichi2(abs(x),3)+vnormal(0.3,x,1)",
    "((x+1)*(y+2))/((x-1)*(y-2))+((x+3)*(y+4))/((z-3)*(y-4))",
    "1/0+x",
    "x/(y-y)",
    "ifgraph(x)+ifgraph(x,y)",
    "1+(2+(3+(4+(5+(6+(7+(8+x)))))))",
};

std::vector<double> values(unsigned seed, std::size_t n)
{
    static constexpr std::uint64_t s_special[] = {0,
                                                  0x8000000000000000u,
                                                  0x7ff8000000000000u,
                                                  0xfff8000000000000u,
                                                  0x7ff0000000000000u,
                                                  0xfff0000000000000u,
                                                  1,
                                                  0x800fffffffffffffu,
                                                  0x7ff8000000000123u,
                                                  0xfff8000000000456u,
                                                  0x7fefffffffffffffu,
                                                  0x3ff0000000000000u,
                                                  0x4012000000000000u,
                                                  0x0010000000000000u,
                                                  0x4130000000000001u,
                                                  0x4340000000000000u,
                                                  0x7ff0000000000001u,
                                                  0x4086300000000000u,
                                                  0xc087500000000000u,
                                                  0x47e1234512345123u};
    std::mt19937_64 random(seed);
    std::vector<double> result(n);
    for (double& v : result) {
        const auto kind = random() % 8;
        v = kind == 0   ? std::bit_cast<double>(s_special[random() % std::size(s_special)])
            : kind == 1 ? std::bit_cast<double>(random())
            : kind == 2 ? static_cast<double>(static_cast<int>(random() % 7) - 3)
                        : std::uniform_real_distribution<>(-10, 10)(random);
    }
    return result;
}

void expect_same_bits(const std::vector<double>& a, const std::vector<double>& b, std::size_t n, const char* what)
{
    for (std::size_t i = 0; i < n; ++i)
        ASSERT_EQ(std::bit_cast<std::uint64_t>(a[i]), std::bit_cast<std::uint64_t>(b[i])) << what << ", case " << i;
}

TEST(ColumnKernels, GiveTheBitsOfSingleCalls)
{
    constexpr std::size_t n = 4099;
    const auto x = values(1, n), y = values(2, n), z = values(3, n);
    const double* const columns[] = {x.data(), y.data(), z.data()};
    for (const char* formula : s_formulas) {
        ExInterpreter interpreter(formula, 3);
        std::vector<double> single(n), column(n);
        for (std::size_t i = 0; i < n; ++i)
            ASSERT_EQ(interpreter.ExpresVal(&single[i], x[i], y[i], z[i]), 1) << formula;
        for (const qmml::platform::Level level : qmml::platform::supported_levels()) {
            const qmml::platform::ForcedLevel forced(level);
            ASSERT_EQ(interpreter.ExpresColumn(column.data(), static_cast<int>(n), columns), static_cast<int>(n));
            expect_same_bits(column, single, n, formula);
            if (HasFatalFailure()) {
                ADD_FAILURE() << "level " << static_cast<int>(level);
                return;
            }
        }
    }
}

TEST(Column, HasEveryLengthAndMayReplaceItsArgument)
{
    ExInterpreter interpreter("x*2+y", 2);
    for (int n : {1, 2, 7, 8, 9, 511, 512, 513, 1024, 1500}) {
        const auto size = static_cast<std::size_t>(n);
        auto x = values(4, size);
        const auto y = values(5, size);
        std::vector<double> expected(size), guarded(size + 1, 42.0);
        for (std::size_t i = 0; i < size; ++i)
            interpreter.ExpresVal(&expected[i], x[i], y[i]);
        const double* const columns[] = {x.data(), y.data()};
        ASSERT_EQ(interpreter.ExpresColumn(guarded.data(), n, columns), n);
        expect_same_bits(guarded, expected, size, "apart");
        EXPECT_EQ(guarded[size], 42.0);
        ASSERT_EQ(interpreter.ExpresColumn(x.data(), n, columns), n);
        expect_same_bits(x, expected, size, "in place");
    }
}

// Long results go past the caches in whole lines: the ends and the alignment must not matter.
TEST(ColumnKernels, GiveLongColumnsTheSameResultsAtEveryAlignment)
{
    ExInterpreter interpreter("x*2+y", 2);
    constexpr std::size_t n = (1u << 17) + 777;
    const auto x = values(6, n), y = values(7, n);
    const double* const columns[] = {x.data(), y.data()};
    std::vector<double> expected(n), result(n + 16);
    for (std::size_t i = 0; i < n; ++i)
        interpreter.ExpresVal(&expected[i], x[i], y[i]);
    for (const qmml::platform::Level level : qmml::platform::supported_levels()) {
        const qmml::platform::ForcedLevel forced(level);
        for (std::size_t offset : {0u, 1u, 6u, 7u}) {
            std::fill(result.begin(), result.end(), 42.0);
            ASSERT_EQ(interpreter.ExpresColumn(result.data() + offset, static_cast<int>(n), columns),
                      static_cast<int>(n));
            EXPECT_EQ(result[n + offset], 42.0);
            result.erase(result.begin(), result.begin() + static_cast<std::ptrdiff_t>(offset));
            expect_same_bits(result, expected, n, "level and alignment");
            result.resize(n + 16);
        }
    }
}

TEST(Column, TouchesNothingWithoutCases)
{
    ExInterpreter interpreter("x+", 1);
    double result = 3.0;
    EXPECT_EQ(interpreter.ExpresColumn(&result, 0, nullptr), 0);
    EXPECT_EQ(interpreter.ExpresColumn(&result, -5, nullptr), 0);
    EXPECT_EQ(interpreter.ExpresColumn(nullptr, 0, nullptr), 0);
    EXPECT_EQ(result, 3.0);
    EXPECT_STREQ(interpreter.GetInterpreterErrorDescr(), "");
}

TEST(Column, IsMissingThroughoutAfterAFormulaError)
{
    ExInterpreter interpreter("x+q", 1);
    std::vector<double> x(1000, 1.0), result(1000, -2.5);
    const double* const columns[] = {x.data()};
    EXPECT_EQ(interpreter.ExpresColumn(result.data(), 1000, columns), 0);
    EXPECT_EQ(interpreter.GetInterpreterError(), 1);
    for (double r : result)
        ASSERT_EQ(std::bit_cast<std::uint64_t>(r), std::bit_cast<std::uint64_t>(-2.5) | 0x7ff8000000000000u);
}

TEST(Column, TreatsAbsentColumnsAsMissingAndChecksWithoutAResult)
{
    ExInterpreter interpreter("max(1,x)+(y=y)", 2);
    const double x[] = {5.0, 6.0};
    const double* const columns[] = {x, nullptr};
    double result[2];
    EXPECT_EQ(interpreter.ExpresColumn(result, 2, columns), 2);
    EXPECT_EQ(result[1], 7.0);
    EXPECT_EQ(interpreter.ExpresColumn(result, 2, nullptr), 2);
    EXPECT_EQ(result[1], 2.0);
    EXPECT_EQ(interpreter.ExpresColumn(nullptr, 2, columns), 2);
    EXPECT_EQ(ExInterpreter("1 2", 2).ExpresColumn(nullptr, 2, columns), 0);
}

} // namespace
