// Reference: the C library's strtod, which rounds correctly.
#include "support.h"

#include <algorithm>
#include <climits>
#include <cmath>
#include <cstdlib>
#include <gtest/gtest.h>
#include <limits>
#include <memory>
#include <string>
#include <sys/mman.h>
#include <unistd.h>

namespace {

constexpr double s_infinity = std::numeric_limits<double>::infinity();

double scan(const std::string& text)
{
    // On the heap and no longer than it is, so that reading on is noticed.
    const auto exact = std::make_unique<char[]>(text.size() + 1);
    text.copy(exact.get(), text.size());
    double value = -77;
    EXPECT_EQ(Get_NU(exact.get(), &value), 1) << text;
    return value;
}

TEST(Scanner, ReadsWholeFields)
{
    const DecimalSeparator comma(',');
    const struct {
        const char* text;
        double expected;
    } cases[] = {
        {"0", 0},
        {"1.5", 1.5},
        {"1,5", 1.5},
        {" \t-2.5e-1 \r\n", -0.25},
        {"+7", 7},
        {"5.", 5},
        {",5", 0.5},
        {".5", 0.5},
        {"-.5E+1", -5},
        {"000120", 120},
        {"1e999", s_infinity},
        {"-1e999", -s_infinity},
        {"1e-999", 0},
        {"0e99999999999999999999", 0},
        {"1e99999999999999999999", s_infinity},
        {"1e-99999999999999999999", 0},
        {"9007199254740993", 9007199254740992},
        {"9007199254740993.00000000000000000000000000001", 9007199254740994},
        {"18446744073709551616", 18446744073709551616.0},
        {"1e22", 1e22},
        {"1e23", 1e23},
        {"123456789012345678e-30", 123456789012345678e-30},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.text);
        EXPECT_EQ(scan(c.text), c.expected);
    }
    EXPECT_TRUE(std::signbit(scan("-0")));
    for (const char* missing : {".", "", "  ", " . ", "\t\n"})
        EXPECT_TRUE(std::isnan(scan(missing))) << '"' << missing << '"';
}

TEST(Scanner, RefusesEverythingElse)
{
    for (const char* text :
         {"x",    "1x",    "1 2",   "-",    "+",     "--1",   "+-1",      "- 1",  "-.",    "+.",    "..",
          "1..2", "1.2.3", "1,2.3", ",",    "e",     "e5",    ".e5",      "1e",   "1e+",   "1e5.5", "1e 5",
          "inf",  "-inf",  "nan",   "0x10", "1_000", "1'000", "\xC2\xA0", "\x01", "1\xA0", "#",     "1;2"}) {
        const DecimalSeparator comma(',');
        double value = 42;
        EXPECT_EQ(Get_NU(text, &value), 0) << '"' << text << '"';
        EXPECT_EQ(value, 42) << text;
    }
    double value = 42;
    EXPECT_EQ(Get_NU("1,5", &value), 0); // no comma configured
    EXPECT_EQ(Get_NU(nullptr, &value), 0);
    EXPECT_EQ(value, 42);
    EXPECT_EQ(Get_NU("1.5", nullptr), 1);
    EXPECT_EQ(Get_NU("x", nullptr), 0);
}

TEST(Scanner, RoundsCorrectly)
{
    std::mt19937_64 engine(7);
    const auto below = [&](unsigned n) { return static_cast<int>(engine() % n); };
    for (int i = 0; i < 300'000; ++i) {
        std::string text = below(4) ? "" : "-";
        const int digits = 1 + below(i % 10 ? 20 : 800),
                  separator = below(2) ? below(static_cast<unsigned>(digits + 1)) : -1;
        for (int d = 0; d < digits; ++d) {
            if (d == separator)
                text += '.';
            text += static_cast<char>('0' + (below(3) ? below(10) : 0));
        }
        if (below(2))
            text += 'e' + std::to_string(below(700) - 350);
        double value = 0;
        ASSERT_EQ(Get_NU(text.c_str(), &value), 1) << text;
        ASSERT_EQ(bits(value), bits(std::strtod(text.c_str(), nullptr))) << text;
    }
}

// The exact decimal form of the middle between a double and the next: even wins, and one digit further behind decides.
TEST(Scanner, DecidesTies)
{
    AnyBits any;
    int ties = 0;
    for (int i = 0; i < 2000; ++i) {
        const double low =
            std::fabs(i < 500 ? std::bit_cast<double>(bits(any()) >> 12) : any()); // first some denormals
        const double high = std::nextafter(low, s_infinity);
        if (!std::isfinite(high))
            continue;
        ++ties;
        char text[1300];
        const auto middle = (static_cast<long double>(low) + static_cast<long double>(high)) / 2;
        std::snprintf(text, sizeof text, "%.1100Lf", middle); // all its digits
        const std::string digits = text;
        const double even = bits(low) % 2 ? high : low;
        ASSERT_EQ(bits(scan(digits)), bits(even)) << digits;
        ASSERT_EQ(bits(scan(digits + "1")), bits(high)) << digits;
    }
    EXPECT_GT(ties, 1900);
}

TEST(Scanner, EndsOnHostileFields)
{
    constexpr std::size_t many = 3'000'000;
    EXPECT_EQ(scan(std::string(many, '9')), s_infinity);
    EXPECT_EQ(scan(std::string(many, '0') + "7"), 7);
    EXPECT_EQ(scan("0." + std::string(many, '0') + "7"), 0);
    EXPECT_EQ(scan("0." + std::string(many, '0') + "25e" + std::to_string(many)), 0.25);
    EXPECT_EQ(scan("1" + std::string(many, '0') + "e-" + std::to_string(many)), 1);
    EXPECT_EQ(scan("1e" + std::string(many, '0') + "2"), 100);
    EXPECT_TRUE(std::isnan(scan(std::string(many, ' '))));
    EXPECT_EQ(Get_NU(std::string(many, '-').c_str(), nullptr), 0);
    std::string noise(64, '\0');
    std::mt19937_64 engine(11);
    for (int i = 0; i < 200'000; ++i) {
        for (char& c : noise)
            c = "0123456789.,eE+- \tx"[engine() % 20];
        const char* cursor = noise.c_str();
        for (double value = 0; Get_NU_EOB(&cursor, &value);)
            ASSERT_LE(cursor, noise.c_str() + noise.size());
    }
}

// Words are read ahead of the end, but never from a page that the text does not reach.
TEST(Scanner, StaysInThePage)
{
    const auto page = static_cast<std::size_t>(sysconf(_SC_PAGESIZE));
    void* const pages = mmap(nullptr, 2 * page, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
    ASSERT_NE(pages, MAP_FAILED);
    char* const end = static_cast<char*>(pages) + page;
    ASSERT_EQ(mprotect(end, page, PROT_NONE), 0);
    for (const std::string all : {"-1234567890.12345678901234567890e-12", "0.00000000012345678", "7"})
        for (std::size_t size = 1; size <= all.size(); ++size) {
            const std::string text = all.substr(0, size);
            char* const start = std::copy(text.begin(), text.end(), end - size - 1) - size;
            end[-1] = '\0';
            double value = 0;
            if (Get_NU(start, &value) == 1)
                EXPECT_EQ(value, std::strtod(start, nullptr)) << text;
            else
                EXPECT_NE(text.find_last_of("-e"), std::string::npos) << text;
        }
    munmap(pages, 2 * page);
}

TEST(ScannerCursor, StopsBehindTheNumber)
{
    const struct {
        const char* text;
        double expected; // 1e300: refused
        const char* rest;
    } cases[] = {
        {"12.5abc", 12.5, "abc"}, {"  -3 4", -3, " 4"}, {"1e", 1, "e"},      {"1e+x", 1, "e+x"}, {"1.2.3", 1.2, ".3"},
        {"0x10", 0, "x10"},       {"2;3", 2, ";3"},     {"7", 7, ""},        {"1-2", 1, "-2"},   {"1,5", 1, ",5"},
        {" abc", 1e300, " abc"},  {"-", 1e300, "-"},    {",5", 1e300, ",5"}, {"", 1e300, ""},    {"1e5e5", 1e5, "e5"},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.text);
        const char* cursor = c.text;
        double value = 1e300;
        EXPECT_EQ(Get_NU_EOB(&cursor, &value), c.expected == 1e300 ? 0 : 1);
        EXPECT_EQ(value, c.expected);
        EXPECT_STREQ(cursor, c.rest);
    }
    const char* cursor = " . 8  ";
    double value = 0;
    EXPECT_EQ(Get_NU_EOB(&cursor, &value), 1);
    EXPECT_TRUE(std::isnan(value));
    EXPECT_EQ(Get_NU_EOB(&cursor, nullptr), 1);
    EXPECT_STREQ(cursor, "  ");
    EXPECT_EQ(Get_NU_EOB(&cursor, &value), 1); // blanks that are left
    EXPECT_TRUE(std::isnan(value));
    EXPECT_EQ(Get_NU_EOB(&cursor, &value), 0);
    EXPECT_STREQ(cursor, "");
    cursor = nullptr;
    EXPECT_EQ(Get_NU_EOB(&cursor, &value), 0);
    EXPECT_EQ(Get_NU_EOB(nullptr, &value), 0);
}

TEST(Scanner, ReadsTheSameInEveryMode)
{
    for (const int mode : {13, 0, INT_MIN, INT_MAX}) {
        Ini_GN(mode);
        EXPECT_EQ(scan("1.25e2  "), 125);
    }
}

TEST(Scanner, SurvivesEveryTrap)
{
    int read = 0;
    double values[4] = {};
    {
        const EveryTrap traps;
        for (const char* text : {"0.1", "1e999", "4e-324", "1e-999", "123456789012345678901234567890", ".", "1e23"}) {
            read += Get_NU(text, &values[0]);
            const char* cursor = text;
            read += Get_NU_EOB(&cursor, &values[1]);
        }
        const char* blanks = "  ";
        read += Get_NU_EOB(&blanks, &values[2]);
    }
    EXPECT_EQ(read, 15);
}

} // namespace
