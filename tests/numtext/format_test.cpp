// References: the C library's printf and strtod, which round exactly.
#include "support.h"

#include <algorithm>
#include <array>
#include <cfloat>
#include <climits>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <gtest/gtest.h>
#include <limits>
#include <qmml/core.h>
#include <string>

namespace {

constexpr double s_infinity = std::numeric_limits<double>::infinity();
constexpr double s_nan = std::numeric_limits<double>::quiet_NaN();

std::string padded(double value, int width, int digits)
{
    std::array<char, 300> text;
    text.fill('#');
    const int length = ConvWrapper(value, 132, width, digits, text.data());
    EXPECT_EQ(text[static_cast<std::size_t>(length)], '\0');
    EXPECT_TRUE(std::all_of(text.begin() + length + 1, text.end(), [](char c) { return c == '#'; }));
    return text.data();
}

std::string format(double value, int width = 15, int digits = 15)
{
    const std::string text = padded(value, width, digits);
    EXPECT_GE(static_cast<int>(text.size()), width);
    return text.substr(0, text.find(' '));
}

std::string scientific(double value, int digits)
{
    char text[64];
    std::snprintf(text, sizeof text, "%.*e", digits - 1, value);
    return text;
}

// The significant digits of a text, without the zeros at both ends.
std::string significant(const std::string& text)
{
    std::string digits = text.substr(0, text.find('e'));
    std::erase_if(digits, [](char c) { return c < '0' || c > '9'; });
    digits.erase(0, digits.find_first_not_of('0'));
    return digits.substr(0, digits.find_last_not_of('0') + 1);
}

std::size_t fixed_size(const std::string& scientific_text)
{
    const int count = static_cast<int>(significant(scientific_text).size());
    const int exponent = std::atoi(scientific_text.c_str() + scientific_text.find('e') + 1);
    const int size = exponent < 0 ? count + 1 - exponent : std::max(exponent + 1, count + (count > exponent + 1));
    return static_cast<std::size_t>(size + (scientific_text[0] == '-'));
}

TEST(Formatter, ChoosesTheForm)
{
    const struct {
        double value;
        int width, digits;
        const char* expected;
    } cases[] = {
        {0, 15, 15, "0"},
        {-0.0, 15, 15, "-0"},
        {120, 15, 15, "120"},
        {-0.00125, 15, 15, "-0.00125"},
        {0.1, 15, 17, "0.1"},
        {0.1 + 0.2, 15, 15, "0.3"},
        {0.1 + 0.2, 20, 17, "0.30000000000000004"},
        {999999999999999, 15, 15, "999999999999999"},
        {-99999999999999, 15, 15, "-99999999999999"},
        {-999999999999999, 15, 15, "-999999999999999"},
        {1e15, 15, 15, "1e15"},
        {1e15, 16, 15, "1000000000000000"},
        {9999999999999996, 17, 15, "10000000000000000"},
        {1.0 / 3, 17, 15, "0.333333333333333"},
        {1.0 / 3, 15, 15, "0.333333333333333"},
        {-1.0 / 300, 15, 15, "-0.00333333333333333"},
        {1.0 / 3000, 25, 15, "0.000333333333333333"},
        {1.0 / 3000, 15, 15, "3.33333333333333e-4"},
        {123456789012.345, 15, 15, "123456789012.345"},
        {2.0 / 3, 8, 6, "0.666667"},
        {1e-13, 15, 15, "0.0000000000001"},
        {1e-14, 15, 15, "1e-14"},
        {1.25e-30, 15, 15, "1.25e-30"},
        {5e-324, 15, 15, "5e-324"},
        {DBL_MIN, 15, 15, "2.2250738585072e-308"},
        {DBL_MAX, 15, 15, "1.79769313486231e308"}, // one more in the last place would be infinite
        {DBL_MAX, 15, 3, "1.79e308"},
        {-DBL_MAX, 15, 1, "-1e308"},
        {DBL_MAX, 15, 17, "1.7976931348623157e308"},
        {2.5, 3, 1, "2"}, // ties to even
        {3.5, 3, 1, "4"},
        {95, 3, 1, "100"},
        {95, 2, 1, "100"}, // as short as with an exponent
        {950, 2, 1, "1e3"},
        {5, 0, 15, "5"},
        {5, INT_MIN, INT_MIN, "5"},
        {s_nan, 15, 15, "."},
        {-s_nan, 0, 15, "."},
        {s_infinity, 15, 15, "1e999"},
        {-s_infinity, 15, 15, "-1e999"},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(testing::Message() << scientific(c.value, 17) << " in " << c.width << ", " << c.digits);
        const std::string expected = c.expected;
        const int blanks = std::max(c.width, 0) - static_cast<int>(expected.size());
        EXPECT_EQ(padded(c.value, c.width, c.digits),
                  expected + std::string(static_cast<std::size_t>(std::max(blanks, 0)), ' '));
    }
    EXPECT_EQ(padded(1e200, INT_MAX, INT_MAX), "1" + std::string(200, '0') + std::string(54, ' '));
}

// At every number of digits: the text reads back as what rounding leaves, a digit less would not, and the form is the
// fixed one exactly where it fits or is no longer than the other.
TEST(Formatter, WritesTheShortestTextOfTheRoundedValue)
{
    AnyBits any;
    for (int i = 0; i < 400'000; ++i) {
        int exponent = 0;
        double value = any();
        if (i % 2) // of everyday size
            value = std::ldexp(std::frexp(value, &exponent), i % 140 - 60);
        else if (i % 16 == 0) // denormal
            value = std::bit_cast<double>(bits(value) >> (12 + i % 50));
        if (!std::isfinite(value))
            continue;
        const int digits = i % 3 == 0 ? 15 : i % 17 + 1, width = i % 5 == 0 ? i % 30 : 15;
        const std::string reference = scientific(value, digits), text = format(value, width, digits);
        const double rounded = std::strtod(reference.c_str(), nullptr), read = std::strtod(text.c_str(), nullptr);
        if (std::isinf(rounded)) {
            ASSERT_LT(std::fabs(read), std::fabs(value)) << text;
            ASSERT_NEAR(read / value, 1, std::pow(10, 1 - digits)) << text;
            continue;
        }
        ASSERT_EQ(bits(read), bits(rounded)) << text << " for " << reference;
        const int count = std::max(static_cast<int>(significant(text).size()), 1);
        ASSERT_LE(count, digits) << text;
        if (count > 1) {
            ASSERT_NE(std::strtod(scientific(read, count - 1).c_str(), nullptr), read) << text;
        }
        const bool fixed = text.find('e') == std::string::npos;
        const std::string best = scientific(read, count); // with a sign and two digits in the exponent at least
        const std::size_t needed = fixed_size(best), e = best.find('e');
        const std::size_t with_exponent = e + std::to_string(std::stoi(best.substr(e + 1))).size() + 1;
        ASSERT_EQ(fixed, needed <= static_cast<std::size_t>(width) || needed <= with_exponent)
            << text << " in " << width;
        if (fixed) {
            ASSERT_EQ(text.size(), needed) << text;
        }
    }
}

// Where the number of digits before the separator changes.
TEST(Formatter, RoundsAroundPowersOfTen)
{
    for (int exponent = -307; exponent <= 307; ++exponent) {
        const double power = std::strtod(("1e" + std::to_string(exponent)).c_str(), nullptr);
        double value = power;
        for (int step = 0; step < 4; ++step)
            value = std::nextafter(value, 0);
        for (int step = -4; step <= 4; ++step, value = std::nextafter(value, s_infinity))
            for (int digits = 1; digits <= 15; ++digits) {
                const std::string reference = scientific(value, digits), text = format(value, 0, digits);
                ASSERT_EQ(std::strtod(text.c_str(), nullptr), std::strtod(reference.c_str(), nullptr)) << text;
                ASSERT_EQ(significant(text), significant(reference));
            }
    }
}

TEST(Formatter, ReadsBack)
{
    for (const char separator : {'.', ','}) {
        const DecimalSeparator chosen(static_cast<unsigned char>(separator));
        AnyBits any;
        for (int i = 0; i < 200'000; ++i) {
            const double value = any();
            const std::string text = format(value, i % 40, 17);
            double read = 0;
            ASSERT_EQ(Get_NU(text.c_str(), &read), 1) << text;
            if (std::isnan(value))
                ASSERT_TRUE(std::isnan(read)) << text;
            else
                ASSERT_EQ(bits(read), bits(value)) << text;
            // A number of 15 digits comes back as those digits.
            const std::string once = format(value);
            ASSERT_EQ(Get_NU(once.c_str(), &read), 1) << once;
            ASSERT_EQ(format(read), once);
        }
    }
}

TEST(Formatter, FollowsTheSeparator)
{
    const struct {
        unsigned short separator;
        const char* expected;
    } cases[] = {{',', "1,5"}, {';', "1;5"}, {'.', "1.5"},   {0, "1.5"},      {' ', "1.5"},
                 {'7', "1.5"}, {'e', "1.5"}, {0x66B, "1.5"}, {0xFFFF, "1.5"}, {'-', "1.5"}};
    for (const auto& c : cases) {
        const DecimalSeparator chosen(c.separator);
        EXPECT_EQ(GetDecimalSepConv(), c.separator);
        EXPECT_EQ(format(1.5), c.expected);
        EXPECT_EQ(format(1.5e40), std::string(c.expected) + "e40");
        EXPECT_EQ(format(s_nan), ".");
        double value = 0;
        EXPECT_EQ(Get_NU(c.expected, &value), 1);
        EXPECT_EQ(value, 1.5);
    }
    SetDecimalSepConv(',');
    EXPECT_EQ(GetDecimalSepConv(), ',');
    SetDecimalSepConv('.');
    EXPECT_EQ(GetDecimalSepConv(), '.');
}

TEST(Formatter, KeepsTheFormatUntilTheNext)
{
    char text[64];
    IniCon__(132, 8, 3);
    EXPECT_EQ(Conver__(3.14159, text), 8);
    EXPECT_STREQ(text, "3.14    ");
    EXPECT_EQ(ConvWrapper1(3.14159, text), 15);
    EXPECT_STREQ(text, "3.14159        ");
    EXPECT_EQ(Conver__(2, text), 15);
    EXPECT_EQ(ConvWrapper(2, 132, 4, 15, text), 4);
    EXPECT_EQ(Conver__(3, text), 4);
    EXPECT_EQ(Conver__(3, nullptr), 0);
    EXPECT_EQ(ConvWrapper1(3, nullptr), 0);
}

TEST(Formatter, WritesIntegers)
{
    for (const int value : {0, 7, -7, INT_MAX, INT_MIN}) {
        char text[12];
        ConInt__(value, text);
        EXPECT_EQ(text, std::to_string(value));
    }
    ConInt__(1, nullptr);
}

TEST(NeededDigits, AreCounted)
{
    const struct {
        double value;
        int digits, decimals;
    } cases[] = {{0, 1, 0},
                 {120, 2, 0},
                 {-3.25, 3, 2},
                 {0.001, 1, 3},
                 {1e300, 1, 0},
                 {5e-324, 1, 324},
                 {1.0 / 3, 15, 15},
                 {0.1 + 0.2, 1, 1},
                 {s_nan, 1, 0},
                 {s_infinity, 1, 0},
                 {1234567.875, 10, 3},
                 {1e15 + 0.5, 1, 0},
                 {99.99999999999999, 1, 0}};
    for (const auto& c : cases) {
        SCOPED_TRACE(c.value);
        EXPECT_EQ(EvalNumDig(c.value), c.digits);
        EXPECT_EQ(EvalDC(c.value), c.decimals);
    }
}

TEST(Formatter, SurvivesEveryTrap)
{
    const double values[] = {
        0.1, 1.0 / 3, 5e-324, DBL_MAX, -s_infinity, s_nan, std::numeric_limits<double>::signaling_NaN()};
    int written = 0;
    {
        const EveryTrap traps;
        for (const double& value : values)
            for (const int digits : {1, 15, 16, 17}) {
                char text[64];
                written += ConvWrapper(value, 132, 30, digits, text) == 30;
                written += EvalNumDig(value) >= 1 && EvalDC(value) >= 0;
            }
    }
    EXPECT_EQ(written, 2 * 4 * static_cast<int>(std::size(values)));
}

} // namespace
