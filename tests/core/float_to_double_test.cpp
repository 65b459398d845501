#include <qmml/missing.h>

#include <gtest/gtest.h>

#include <bit>
#include <cfenv>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <limits>
#include <random>
#include <string>

namespace {

std::string digits(const char* format, float f)
{
    char text[128];
    std::snprintf(text, sizeof text, format, double{f});
    return text;
}

// Exactly between two numbers of 7 digits; print rounds such a value to even, this function away from zero.
bool is_tie(float f)
{
    const std::string text = digits("%.70e", std::fabs(f));
    return text.substr(8, text.find('e') - 8).find_last_not_of('0') == 0 && text[8] == '5';
}

void expect_as_printed(float f)
{
    const double expected = std::strtod(digits("%.7g", f).c_str(), nullptr), magnitude = std::fabs(double{f});
    // Up to 1e22 powers of ten are exact and one rounding is left; beyond, a rounded power leaves up to two more.
    const double error = magnitude > 1e-15 && magnitude < 1e28 ? 0 : 5e-16;
    EXPECT_NEAR(FloatToDoubleExact(f), expected, error * std::fabs(expected)) << digits("%.9g", f);
}

TEST(FloatToDoubleExact, GivesWhatPrintShows)
{
    std::mt19937 random(20240229);
    for (int i = 0; i < 100000; ++i) {
        const float f = std::bit_cast<float>(static_cast<std::uint32_t>(random()));
        if (std::isnormal(f) && !is_tie(f))
            expect_as_printed(f);
    }
}

TEST(FloatToDoubleExact, HoldsAroundPowersOfTen)
{
    for (int k = -37; k <= 38; ++k) {
        const auto power = std::strtof(("1e" + std::to_string(k)).c_str(), nullptr);
        for (float f : {std::nextafter(power, 0.0f), power, std::nextafter(power, std::numeric_limits<float>::max())})
            if (!is_tie(f))
                expect_as_printed(f);
    }
}

TEST(FloatToDoubleExact, KeepsItsSpecialCases)
{
    const struct {
        float f;
        double expected;
    } cases[] = {
        {0.1f, 0.1},
        {-0.1f, -0.1},
        {123456789.0f, 123456800.0},
        {10000005.0f, 10000010.0},
        {-0.0f, 0.0},
        {1e-39f, 0.0},
        {-1e-39f, 0.0},

        {9999999.0f, 9999999.0},
        {1e6f, 1e6},
        {INFINITY, INFINITY},
        {-INFINITY, -INFINITY},
    };
    for (const auto& c : cases) {
        EXPECT_EQ(FloatToDoubleExact(c.f), c.expected) << c.f;
        EXPECT_EQ(std::signbit(FloatToDoubleExact(c.f)), std::signbit(c.expected)) << c.f;
    }
    expect_as_printed(0x1p-126f); // the smallest that is not 0
    // A NaN keeps its sign and payload, and a signalling one raises nothing.
    std::feclearexcept(FE_ALL_EXCEPT);
    const double nan = FloatToDoubleExact(std::bit_cast<float>(0xFF800123u));
    EXPECT_EQ(std::bit_cast<std::uint64_t>(nan), 0xFFF8000000000000u | std::uint64_t{0x123} << 29);
    EXPECT_EQ(std::fetestexcept(FE_INVALID), 0);
}

} // namespace
