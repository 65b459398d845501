#include <qmml/missing.h>

#include <gtest/gtest.h>

#include <bit>
#include <cmath>
#include <cstdint>

namespace {

std::uint64_t bits(double v)
{
    return std::bit_cast<std::uint64_t>(v);
}
double from(std::uint64_t b)
{
    return std::bit_cast<double>(b);
}

TEST(Missing, EveryDoubleNaNIsMissing)
{
    const struct {
        std::uint64_t bits;
        int missing;
    } cases[] = {
        {0x7FF8000000000000u, 1}, {0xFFF8000000000000u, 1}, {0x7FF0000000000001u, 1}, {0xFFFFFFFFFFFFFFFFu, 1},
        {0x7FF0000000000000u, 0}, {0xFFF0000000000000u, 0}, {0x7FEFFFFFFFFFFFFFu, 0}, {0u, 0},
        {0x8000000000000000u, 0},
    };
    for (const auto& c : cases) {
        const double value = from(c.bits);
        EXPECT_EQ(IsNaN(&value), c.missing) << std::hex << c.bits;
        EXPECT_EQ(IsNan(&value), c.missing) << std::hex << c.bits;
    }
    EXPECT_EQ(IsNaN(nullptr), 0);
    setNaN(nullptr);
}

TEST(Missing, SettingKeepsSignAndPayload)
{
    for (const auto& [before, after] :
         {std::pair{1.0, std::uint64_t{0x7FF8000000000000u}}, std::pair{-2.5, std::uint64_t{0xFFFC000000000000u}},
          std::pair{from(0x0000000000000123u), std::uint64_t{0x7FF8000000000123u}}}) {
        double value = before;
        setNaN(&value);
        EXPECT_EQ(bits(value), after);
        value = before;
        SetNan(&value);
        EXPECT_EQ(bits(value), after);
    }
}

TEST(Missing, OnlyOneFloatPatternIsMissing)
{
    float value = 0;
    SetNan(&value);
    EXPECT_EQ(std::bit_cast<std::uint32_t>(value), 0xFFFFFFFFu);
    EXPECT_EQ(IsNan(&value), 1);
    for (std::uint32_t other : {0x7FC00000u, 0xFFFFFFFEu, 0x7FFFFFFFu, 0u}) {
        value = std::bit_cast<float>(other);
        EXPECT_EQ(IsNan(&value), 0) << std::hex << other;
    }
}

TEST(Missing, CodesAreReadInTwoRanges)
{
    const struct {
        short code;
        std::uint64_t bits;
        int read;
        int valid;
    } cases[] = {
        {1, 0xFFFFFFFFFFFFFFFFu, 1, 0},  {3, 0xFFFFFFFDFFFFFFFFu, 3, 0},      {9, 0xFFFFFFF7FFFFFFFFu, 9, 0},
        {10, 0xFFFFFFF6FFFFFFFFu, 0, 0}, {11, 0xFFFFFFF5FFFFFFFFu, 0, 1},     {0, 0x00000000FFFFFFFFu, 0, 1},
        {-1, 0x00000001FFFFFFFFu, 0, 1}, {-32768, 0x00008000FFFFFFFFu, 0, 1},
    };
    for (const auto& c : cases) {
        double value = 0;
        NANSet(c.code, &value);
        EXPECT_EQ(bits(value), c.bits) << c.code;
        EXPECT_EQ(NAN_Test(value), c.read) << c.code;
        EXPECT_EQ(valid8(&value), c.valid) << c.code;
    }
    const double plain = from(0x7FF8000000000000u), other_low_word = from(0xFFFFFFFDFFFFFFFEu);
    EXPECT_EQ(valid8(&plain), 1);
    EXPECT_EQ(NAN_Test(other_low_word), 0);
}

TEST(Missing, StaticsHoldFromLoadAndAreWrittenAnew)
{
    EXPECT_EQ(bits(CNAN::m_dNAN), 0x7FF8000000000000u);
    EXPECT_EQ(std::bit_cast<std::uint32_t>(CNAN::m_fNAN), 0xFFFFFFFFu);
    CNAN::m_dNAN = 1;
    CNAN::m_fNAN = 1;
    CNAN a, b;
    EXPECT_EQ(&(a = b), &a);
    EXPECT_EQ(bits(CNAN::m_dNAN), 0x7FF8000000000000u);
    EXPECT_EQ(std::bit_cast<std::uint32_t>(CNAN::m_fNAN), 0xFFFFFFFFu);
}

TEST(Logic, FollowsItsTruthTables)
{
    for (int a : {0, 5})
        for (int b : {0, -1}) {
            EXPECT_EQ(XOR(a, b), (a && !b) || (b && !a));
            for (int c : {0, 2})
                EXPECT_EQ(ThreeCond(a, b, c), (a && c) || (b && !c));
        }
    EXPECT_EQ(lookbr(), 0);
}

} // namespace
