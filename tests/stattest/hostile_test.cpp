// Laws of all entry points: no memory, unmasked traps, instruction sets, counts out of range.
#include "calls.h"
#include "core/memory.h"
#include "platform/float_guard.h"
#include "platform/levels.h"

#include <gtest/gtest.h>

#include <climits>
#include <cmath>
#include <functional>
#include <limits>

namespace qmml::test {
namespace {

struct Entry {
    const char* name;
    std::function<Outputs(const Doubles&)> call;
};

Doubles reversed(const Doubles& data)
{
    return {data.rbegin(), data.rend()};
}

template <class Export>
Outputs fit(Export export_, const Doubles& data)
{
    Outputs o;
    o.result = export_(static_cast<int>(data.size()), data.data(), s_missing, o[0], o[1], &o.code);
    return o;
}

const Entry s_entries[] = {
    {"anova",
     [](const Doubles& d) {
         const int n = static_cast<int>(d.size());
         return anova(d, {n / 3, n - n / 3}, 1);
     }},
    {"chi-square", [](const Doubles& d) { return chi_square(2, static_cast<int>(d.size() / 2), d); }},
    {"KS normal",
     [](const Doubles& d) {
         return kolmogorov_smirnov(1, {0, 1, 0}, d);
     }},
    {"KS weibull",
     [](const Doubles& d) {
         return kolmogorov_smirnov(10, {0.5, 2, 0}, d);
     }},
    {"correlation", [](const Doubles& d) { return correlation(d, reversed(d)); }},
    {"multiple", [](const Doubles& d) { return correlation(d, reversed(d), Doubles(d.size(), 1), 0); }},
    {"Shapiro-Wilk", [](const Doubles& d) { return shapiro_wilk(d, static_cast<int>(d.size())); }},
    {"Kruskal-Wallis",
     [](Doubles d) {
         std::vector<int> group(d.size());
         for (std::size_t i = 0; i < d.size(); ++i)
             group[i] = static_cast<int>(i % 3);
         return kruskal_wallis(group, d, 3);
     }},
    {"lowess",
     [](const Doubles& d) {
         const Smoothed s = lowess(d, reversed(d), 0.5, 2, 0.1);
         Outputs o;
         o.result = s.result;
         o.code = s.code;
         *o[0] = s.ys.empty() ? 0 : s.ys.back();
         return o;
     }},
    {"lognormal fit", [](const Doubles& d) { return fit(FitLognormalDistribution, d); }},
    {"beta fit", [](const Doubles& d) { return fit(FitBetaDistribution, d); }},
    {"gamma fit", [](const Doubles& d) { return fit(FitGammaDistribution, d); }},
    {"extreme fit", [](const Doubles& d) { return fit(FitExtremeDistribution, d); }},
};

std::vector<Doubles> samples()
{
    const double infinity = std::numeric_limits<double>::infinity();
    std::vector<Doubles> all = {{},
                                {1},
                                Doubles(9, 4.5),
                                {1, 2, s_missing, 4, std::numeric_limits<double>::signaling_NaN(), 3},
                                {infinity, 1, 2, 3, -infinity, 2, 4, 1},
                                {1e308, -1e308, 1e308, 5e-324, -1e308, 0, -0.0, 1e-308},
                                normal_sample(700, 1, 0.5, 0.1),
                                normal_sample(3001, 2)};
    all.push_back(all.back());
    for (std::size_t i = 0; i < all.back().size(); i += 7)
        all.back()[i] = s_missing;
    return all;
}

TEST(Hostile, SameBitsAtEveryLevel)
{
    for (const Entry& entry : s_entries)
        for (const Doubles& sample : samples()) {
            const Outputs expected = entry.call(sample);
            for (const auto level : platform::supported_levels()) {
                const platform::ForcedLevel forced(level);
                EXPECT_EQ(entry.call(sample), expected) << entry.name << " " << sample.size();
            }
        }
}

#if defined(__x86_64__)
// Everything but underflow and inexact unmasked: a trap would end the program.
TEST(Hostile, UnmaskedTrapsSurvive)
{
    constexpr unsigned s_traps = 0x1f80u & ~((platform::fault::serious | platform::fault::denormal) << 7);
    const unsigned before = platform::read_unit();
    for (const Entry& entry : s_entries)
        for (const Doubles& sample : samples()) {
            const Outputs masked = entry.call(sample);
            platform::write_unit(s_traps);
            const Outputs unmasked = entry.call(sample);
            const unsigned after = platform::read_unit();
            platform::write_unit(before);
            EXPECT_EQ(after, s_traps);
            if (unmasked.result == masked.result) {
                EXPECT_EQ(unmasked, masked) << entry.name << " " << sample.size();
            } else {
                EXPECT_EQ(unmasked.result, 1) << entry.name;
            }
        }
    // A division by zero that the caller wants to hear of fails the call, and the results stay.
    platform::write_unit(0x1f80u & ~(platform::fault::divide_by_zero << 7));
    const Outputs o = anova({1, 1, 2, 2}, {2, 2});
    platform::write_unit(before);
    EXPECT_EQ(o.result, 1);
    EXPECT_NE(o.code, 0);
    EXPECT_TRUE(o.untouched());
}
#endif

TEST(Hostile, NoMemoryIsCode99OrNoMatter)
{
    const Doubles sample = normal_sample(60, 1, 0.5, 0.1);
    for (const Entry& entry : s_entries) {
        const Outputs expected = entry.call(sample);
        for (long n = 1; n <= 4; ++n) {
            fail_allocation(n);
            const Outputs o = entry.call(sample);
            fail_allocation(0);
            if (o.result == expected.result) {
                EXPECT_EQ(o, expected) << entry.name << " " << n;
            } else {
                EXPECT_EQ(o.code, 99) << entry.name << " " << n;
            }
        }
    }
}

TEST(Hostile, CountsBelowZeroAreEmptyArrays)
{
    Outputs o;
    int df = 0;
    const auto expect = [&o](int result, int code) {
        EXPECT_EQ(result, 1);
        EXPECT_EQ(o.code, code);
    };
    expect(OneWayAnova__(1, 0, nullptr, -4, nullptr, o[0], o[1], o[2], o[3], o[4], o[5], o[6], o[7], &o.code), 1);
    expect(ComputeChiSquareForNbyMTable__(0, INT_MIN, INT_MIN, nullptr, o[0], &df, o[2], &o.code), 1);
    expect(ComputeKolmogorovSmirnovTest__(0, 1, 0, 1, 0, -1, nullptr, 0, o[0], o[1], o[2], &o.code), 1);
    expect(clowess(nullptr, nullptr, INT_MIN, 0, 0, 0, nullptr, nullptr, nullptr, &o.code), 2);
    expect(FitNormalDistribution(-1, nullptr, 0, o[0], o[1], &o.code), 1);
    expect(KruskalAnovaTest__(0, INT_MIN, -1, nullptr, nullptr, nullptr, nullptr, o[0], o[1], &o.code, o[2]), 1);
    EXPECT_TRUE(o.untouched());
}

} // namespace
} // namespace qmml::test
