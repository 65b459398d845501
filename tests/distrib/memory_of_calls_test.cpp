// Functions keep what depends on their last parameters. Nobody may notice.
#include <qmml/distrib.h>

#include "distrib/guard.h"
#include "family.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <bit>
#include <cmath>
#include <cstdint>
#include <random>
#include <thread>

namespace qmml::test {
namespace {

struct Call {
    const Member* member;
    double arguments[4];
};

static std::uint64_t run(const Call& call)
{
    return std::bit_cast<std::uint64_t>(call.member->call(call.arguments));
}

// Few parameters, so that calls repeat, alternate and return to them.
static std::vector<Call> some_calls(unsigned seed)
{
    static constexpr double s_points[] = {0.05, 0.3, 0.7, 1.0, 4.0, 17.0, 260.0, 1999.0};
    static constexpr double s_parameters[] = {0.3, 0.45, 1.0, 2.5, 20.0, 70.0, 300.0, 600.0};
    std::mt19937 random(seed);
    std::vector<Call> calls;
    for (int round = 0; round < 60; ++round)
        for (const Member& member : family()) {
            Call call{&member, {s_points[random() % 8]}};
            for (int i = 1; i < 4; ++i)
                call.arguments[i] = s_parameters[random() % 8];
            calls.push_back(call);
        }
    std::shuffle(calls.begin(), calls.end(), random);
    return calls;
}

TEST(MemoryOfCalls, TheOrderOfCallsDoesNotShow)
{
    const std::vector<Call> calls = some_calls(1);
    std::vector<std::uint64_t> values;
    for (const Call& call : calls)
        values.push_back(run(call));
    for (std::size_t i = calls.size(); i-- > 0;)
        EXPECT_EQ(run(calls[i]), values[i]) << calls[i].member->name;
    // A thread that has called nothing else.
    for (std::size_t i = 0; i < calls.size(); i += 37) {
        std::uint64_t value = 0;
        std::thread([&] { value = run(calls[i]); }).join();
        EXPECT_EQ(value, values[i]) << calls[i].member->name;
    }
}

TEST(MemoryOfCalls, ThreadsDoNotMeet)
{
    const std::vector<Call> calls = some_calls(2);
    std::vector<std::uint64_t> values;
    for (const Call& call : calls)
        values.push_back(run(call));
    int differing[4] = {};
    std::vector<std::thread> threads;
    for (unsigned t = 0; t < 4; ++t)
        threads.emplace_back([&, t] {
            for (std::size_t n = 0; n < calls.size(); ++n) {
                const std::size_t i = (n * (2 * t + 1) + t * 101) % calls.size();
                differing[t] += run(calls[i]) != values[i];
            }
        });
    for (std::thread& thread : threads)
        thread.join();
    for (const int count : differing)
        EXPECT_EQ(count, 0);
}

// A value that was kept raises no fault: where there is one to raise, nothing may be kept.
TEST(MemoryOfCalls, FaultsAreRaisedEachTime)
{
    const auto trapping = [](auto call) {
        const unsigned unit = platform::read_unit();
        platform::write_unit(unit & ~(platform::fault::serious << 7) & ~platform::fault::any);
        const double value = call();
        platform::write_unit(unit);
        return value;
    };
    for (int i = 0; i < 2; ++i) {
        EXPECT_EQ(trapping([] { return betai(1e-100, 2, 0.5); }), distr_error_value);
        EXPECT_EQ(betai(1e-100, 2, 0.5), 1.0);
    }
    // What a signalling NaN leaves behind must not meet a comparison.
    const double signalling = std::bit_cast<double>(std::uint64_t{0x7ff0000000000001u});
    for (const Member& member : family()) {
        const double hostile[4] = {0.5, signalling, signalling, signalling}, ordinary[4] = {0.5, 2, 3, 4};
        member.call(hostile);
        const double value = trapping([&] { return member.call(ordinary); });
        EXPECT_EQ(std::bit_cast<std::uint64_t>(value), std::bit_cast<std::uint64_t>(member.call(ordinary)))
            << member.name;
    }
}

TEST(MemoryOfCalls, ZerosKeepTheirSigns)
{
    for (const double p : {-0.0, 0.0, -0.0}) {
        EXPECT_EQ(std::signbit(i_geom(0, p)), std::signbit(p));
        EXPECT_EQ(std::signbit(d_geom(0, p)), std::signbit(p));
    }
}

} // namespace
} // namespace qmml::test
