// Elementary functions against fifty decimal digits, and the faults that they raise.
#include "core/elementary.h"

#include <boost/multiprecision/cpp_bin_float.hpp>
#include <cfenv>
#include <cmath>
#include <gtest/gtest.h>
#include <limits>
#include <random>

namespace {

using Exact = boost::multiprecision::cpp_bin_float_50;
using namespace qmml;

// Units in the last place of the exact result.
double error_in_ulps(double value, const Exact& exact)
{
    int exponent;
    std::frexp(static_cast<double>(exact), &exponent);
    const Exact unit = ldexp(Exact(1), std::max(exponent - 53, -1074));
    return static_cast<double>(abs((Exact(value) - exact) / unit));
}

struct Region {
    const char* name;
    double (*function)(double);
    Exact (*exact)(const Exact&);
    double low, high;
    bool logarithmic; // the arguments' binary logarithms run from low to high, with both signs where there are any
};

Exact exact_exp(const Exact& x)
{
    return exp(x);
}
Exact exact_log(const Exact& x)
{
    return log(x);
}
Exact exact_sin(const Exact& x)
{
    return sin(x);
}
Exact exact_cos(const Exact& x)
{
    return cos(x);
}
Exact exact_tan(const Exact& x)
{
    return tan(x);
}
Exact exact_atan(const Exact& x)
{
    return atan(x);
}

const Region s_regions[] = {
    {"exp, moderate", elementary::exp, exact_exp, -690, 690, false},
    {"exp, overflow end", elementary::exp, exact_exp, 690, 709.7, false},
    {"exp, denormal end", elementary::exp, exact_exp, -745, -690, false},
    {"exp, small", elementary::exp, exact_exp, -60, 0, true},
    {"log, near one", elementary::log, exact_log, 0.5, 2, false},
    {"log, all exponents", elementary::log, exact_log, -1074, 1023, true},
    {"sin", elementary::sin, exact_sin, -10, 10, false},
    {"sin, reduced", elementary::sin, exact_sin, -524288, 524288, false},
    {"sin, beyond the reduction", elementary::sin, exact_sin, 19, 60, true},
    {"cos", elementary::cos, exact_cos, -10, 10, false},
    {"cos, reduced", elementary::cos, exact_cos, -524288, 524288, false},
    {"cos, beyond the reduction", elementary::cos, exact_cos, 19, 60, true},
    {"tan", elementary::tan, exact_tan, -10, 10, false},
    {"tan, wide", elementary::tan, exact_tan, -40, 60, true},
    {"atan", elementary::atan, exact_atan, -10, 10, false},
    {"atan, wide", elementary::atan, exact_atan, -40, 70, true},
};

TEST(Elementary, ErrorsStayBelowOneUnitInTheLastPlace)
{
    std::mt19937_64 random(1);
    for (const auto& region : s_regions) {
        std::uniform_real_distribution<> uniform(region.low, region.high);
        double worst = 0, at = 0;
        for (int i = 0; i < 4000; ++i) {
            double x = uniform(random);
            if (region.logarithmic)
                x = std::exp2(x) * (region.exact != exact_log && i % 2 != 0 ? -1.0 : 1.0);
            const double error = error_in_ulps(region.function(x), region.exact(Exact(x)));
            if (!(error <= worst))
                worst = error, at = x;
        }
        EXPECT_LT(worst, 1.0) << region.name << " at " << at;
    }
}

// Where nearly all digits cancel in the reduction: the numbers next to multiples of a quarter turn, and the double that
// is closest to one of all.
TEST(Elementary, AnglesNearMultiplesOfAQuarterTurnKeepTheirDigits)
{
    const Exact quarter = boost::math::constants::half_pi<Exact>();
    for (int k = 1; k < 200000; k += 97) {
        const auto x = static_cast<double>(quarter * k);
        EXPECT_LT(error_in_ulps(elementary::sin(x), sin(Exact(x))), 1.0) << k;
        EXPECT_LT(error_in_ulps(elementary::cos(x), cos(Exact(x))), 1.0) << k;
    }
    // Known to all its digits: 6381956970095103 * 2^797 (Muller, Elementary Functions, table of worst cases).
    EXPECT_DOUBLE_EQ(elementary::cos(std::ldexp(6381956970095103.0, 797)), -4.6871659242546276e-19);
}

TEST(Elementary, ExactAndSpecialValues)
{
    const double infinity = std::numeric_limits<double>::infinity(), nan = std::nan("");
    EXPECT_EQ(elementary::exp(0.0), 1.0);
    EXPECT_EQ(elementary::exp(-infinity), 0.0);
    EXPECT_EQ(elementary::exp(infinity), infinity);
    EXPECT_EQ(elementary::exp(1e308), infinity);
    EXPECT_EQ(elementary::exp(-1e308), 0.0);
    EXPECT_EQ(elementary::log(1.0), 0.0);
    EXPECT_EQ(elementary::log(0.0), -infinity);
    EXPECT_EQ(elementary::log(infinity), infinity);
    EXPECT_EQ(elementary::log(0x1p-1074), -1074 * 0x1.62e42fefa39efp-1);
    EXPECT_TRUE(std::signbit(elementary::sin(-0.0)));
    EXPECT_TRUE(std::signbit(elementary::tan(-0.0)));
    EXPECT_TRUE(std::signbit(elementary::atan(-0.0)));
    EXPECT_EQ(elementary::sin(5e-324), 5e-324);
    EXPECT_EQ(elementary::atan(infinity), 0x1.921fb54442d18p+0);
    EXPECT_EQ(elementary::pow(1.1, 2.0), 1.1 * 1.1);
    for (auto* f : {elementary::exp, elementary::log, elementary::sin, elementary::cos})
        EXPECT_TRUE(std::isnan(f(nan)));
    EXPECT_TRUE(std::isnan(elementary::log(-1.0)));
    EXPECT_TRUE(std::isnan(elementary::sin(infinity)));
    EXPECT_TRUE(std::isnan(elementary::tan(-infinity)));
}

TEST(Elementary, RaiseTheFaultsOfMathematicsAndNoOthers)
{
    const double infinity = std::numeric_limits<double>::infinity(), nan = std::nan("");
    const struct {
        double (*function)(double);
        double x;
        int fault;
    } s_cases[] = {
        {elementary::exp, 1000.0, FE_OVERFLOW},
        {elementary::exp, infinity, 0},
        {elementary::exp, nan, 0},
        {elementary::exp, -700.0, 0},
        {elementary::log, 0.0, FE_DIVBYZERO},
        {elementary::log, -1.0, FE_INVALID},
        {elementary::log, nan, 0},
        {elementary::sin, infinity, FE_INVALID},
        {elementary::sin, 1e300, 0},
        {elementary::cos, nan, 0},
        {elementary::tan, nan, 0},
        {elementary::atan, nan, 0},
        {elementary::atan, infinity, 0},
        {elementary::log, 1e-310, 0},
    };
    for (const auto& c : s_cases) {
        std::feclearexcept(FE_ALL_EXCEPT);
        volatile double sink = c.function(c.x);
        (void)sink;
        EXPECT_EQ(std::fetestexcept(FE_INVALID | FE_DIVBYZERO | FE_OVERFLOW), c.fault) << c.x;
    }
}

} // namespace
