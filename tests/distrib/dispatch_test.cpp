#include <qmml/distrib.h>

#include "distrib/result.h"
#include "family.h"
#include "platform/float_guard.h"

#include <gtest/gtest.h>

#include <array>
#include <bit>
#include <cmath>
#include <limits>
#include <string>

namespace qmml::test {

static constexpr double s_point = 0.625;

// Inside the domain of the function.
static std::array<double, 3> parameters_of(const Member& member)
{
    const std::string name = member.name;
    const bool probability = name.ends_with("binom") || name.ends_with("geom");
    return {probability ? 0.75 : 1.75, 1.5, 0.25};
}

static std::uint64_t bits(double v)
{
    return std::bit_cast<std::uint64_t>(v);
}

TEST(Twins, Forward)
{
    for (const Member& member : family()) {
        SCOPED_TRACE(member.name);
        const auto p = parameters_of(member);
        const double arguments[] = {s_point, p[0], p[1], p[2]};
        const double value = member.call(arguments);
        EXPECT_TRUE(std::isfinite(value) && value != distr_error_value);
        EXPECT_EQ(bits(member.call_twin(arguments)), bits(value));
    }
}

TEST(Dispatcher, CallsWhatTheCodeNames)
{
    for (const Member& member : family()) {
        SCOPED_TRACE(member.name);
        const auto p = parameters_of(member);
        const double arguments[] = {s_point, p[0], p[1], p[2]};
        double result = 0;
        unsigned char good = 0;
        switch (member.arguments()) { // no more arguments than the function takes
        case 2: good = DistrFunct(member.code, &result, s_point, p[0]); break;
        case 3: good = DistrFunct(member.code, &result, s_point, p[0], p[1]); break;
        default: good = DistrFunct(member.code, &result, s_point, p[0], p[1], p[2]);
        }
        EXPECT_EQ(good, 1);
        EXPECT_EQ(bits(result), bits(member.call(arguments)));
    }
}

TEST(Dispatcher, FixesTheMeanOfTheLogarithmForTheShortCodes)
{
    double result = 0;
    EXPECT_EQ(DistrFunct(20, &result, 2.0, 1.5), 1);
    EXPECT_EQ(bits(result), bits(d_lognorm(2, 0, 1.5)));
    EXPECT_EQ(DistrFunct(21, &result, 2.0, 1.5), 1);
    EXPECT_EQ(bits(result), bits(i_lognorm(2, 0, 1.5)));
}

TEST(Dispatcher, JudgesTheUntouchedSlotForUnknownCodes)
{
    for (int code : {53, 1000, -1, std::numeric_limits<int>::min()}) {
        SCOPED_TRACE(code);
        for (double before : {1.5, distr_error_value, std::nan(""), std::numeric_limits<double>::infinity()}) {
            double result = before;
            EXPECT_EQ(DistrFunct(code, &result, 0.0), before == 1.5);
            EXPECT_EQ(bits(result), bits(before));
        }
    }
    EXPECT_EQ(DistrFunct(53, nullptr, 0.0), 0);
    EXPECT_EQ(DistrFunct(23, nullptr, 0.0, 0.0, 1.0), 0);
}

TEST(Dispatcher, RefusesErrorsAndInfinities)
{
    double result = 1;
    EXPECT_EQ(DistrFunct(23, &result, 0.0, 0.0, -1.0), 0);
    EXPECT_EQ(result, distr_error_value);
    EXPECT_EQ(DistrFunct(49, &result, 1.0, 2.0), 0);
    EXPECT_EQ(result, std::numeric_limits<double>::infinity());
}

TEST(Dispatcher, DoesNotWriteAfterAFaultThatTheCallerHadUnmasked)
{
    const unsigned unit = platform::read_unit();
    platform::write_unit(unit & ~(platform::fault::divide_by_zero << 7) & ~platform::fault::any);
    double result = 1.5;
    const unsigned char good = DistrFunct(22, &result, 1.0, 1.0 - 1.0 / 3, 0.0); // density with sigma 0
    const unsigned after = platform::read_unit();
    double guarded = 1.5;
    const unsigned char guarded_good = DistrFunct(49, &guarded, 1.0, 2.0); // hears of the fault itself
    platform::write_unit(unit);
    EXPECT_EQ(good, 0);
    EXPECT_EQ(result, 1.5);
    EXPECT_EQ(after & platform::s_unit_masks, unit & ~(platform::fault::divide_by_zero << 7) & platform::s_unit_masks);
    EXPECT_EQ(guarded_good, 0);
    EXPECT_EQ(guarded, distr_error_value);
}

} // namespace qmml::test
