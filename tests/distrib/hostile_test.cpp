// Laws of the whole family under arguments that no caller means.
#include <qmml/distrib.h>

#include "distrib/guard.h"
#include "distrib/result.h"
#include "family.h"
#include "platform/float_guard.h"

#include <gtest/gtest.h>

#include <bit>
#include <chrono>
#include <cmath>
#include <functional>
#include <limits>
#include <string>
#include <vector>

namespace qmml::test {
namespace {

static constexpr double s_infinity = std::numeric_limits<double>::infinity();

static const std::vector<double> s_hostile = {
    std::numeric_limits<double>::quiet_NaN(),
    std::numeric_limits<double>::signaling_NaN(),
    s_infinity,
    -s_infinity,
    0.0,
    -0.0,
    std::numeric_limits<double>::denorm_min(),
    -std::numeric_limits<double>::denorm_min(),
    1e-300,
    -1.5,
    0.3,
    1.0,
    40.0,
    1 - 0x1p-53,
    0x1p-1000,
    0x1p-100,
    0x1p100,
    2500.0,
    1e10,
    1e308,
    -1e308,
};

struct Call {
    std::string name;
    int arguments;
    std::function<double(const double*)> run;
};

static std::vector<Call> calls()
{
    const auto as_int = [](double v) { return within(v, 1e6) ? static_cast<int>(v) : 1000000; };
    std::vector<Call> all = {
        {"gammln", 1, [](const double* a) { return gammln(a[0]); }},
        {"gser", 2,
         [](const double* a) {
             double ratio = 0, gln = 0;
             return static_cast<double>(gser(&ratio, a[0], a[1], &gln));
         }},
        {"gcf", 2,
         [](const double* a) {
             double ratio = 0, gln = 0;
             return static_cast<double>(gcf(&ratio, a[0], a[1], &gln));
         }},
        {"gammq", 2, [](const double* a) { return gammq(a[0], a[1]); }},
        {"betai", 3, [](const double* a) { return betai(a[0], a[1], a[2]); }},
        {"betacf", 3, [](const double* a) { return betacf(a[0], a[1], a[2]); }},
        {"xftest", 3, [](const double* a) { return xftest(a[0], a[1], a[2]); }},
        {"alnorm", 1, [](const double* a) { return alnorm(a[0], 1); }},
        {"invistudent_t", 2, [](const double* a) { return invistudent_t(a[0], a[1]); }},
    };
    for (const Member& member : family())
        all.push_back({member.name, member.arguments(), [&member](const double* a) { return member.call(a); }});
    for (const int k : {-7, 0, 3, 400, 1 << 20, std::numeric_limits<int>::max(), std::numeric_limits<int>::min()}) {
        all.push_back({"invnrm " + std::to_string(k), 1, [k](const double* a) { return invnrm(a[0], k); }});
        all.push_back({"fctral " + std::to_string(k), 1, [=](const double* a) { return fctral(as_int(a[0]), k); }});
    }
    return all;
}

// Every combination of hostile arguments.
template <class Visit>
static void for_each_argument_list(int arguments, Visit visit)
{
    std::vector<std::size_t> index(static_cast<std::size_t>(arguments), 0);
    double a[4] = {};
    for (;;) {
        for (std::size_t i = 0; i < index.size(); ++i)
            a[i] = s_hostile[index[i]];
        visit(a);
        std::size_t i = 0;
        while (i < index.size() && ++index[i] == s_hostile.size())
            index[i++] = 0;
        if (i == index.size())
            return;
    }
}

static double run_unmasked(const Call& call, const double* a, unsigned& unit_after)
{
    const unsigned unit = platform::read_unit();
    platform::write_unit(unit & ~(platform::fault::serious << 7) & ~platform::fault::any);
    const double value = call.run(a);
    unit_after = platform::read_unit();
    platform::write_unit(unit);
    return value;
}

// Seconds. A build without optimisation or with instruments is up to thirty times slower.
#if defined(NDEBUG) && !defined(__SANITIZE_ADDRESS__)
static constexpr double s_longest_call = 0.5;
#else
static constexpr double s_longest_call = 15;
#endif

// With the traps enabled a call returns what it returns without, or fails; the masks survive either way.
TEST(Hostile, NoCallTrapsOrHangs)
{
    for (const Call& call : calls()) {
        SCOPED_TRACE(call.name);
        std::chrono::duration<double> slowest{};
        int differing = 0, unit_changed = 0;
        for_each_argument_list(call.arguments, [&](const double* a) {
            const auto start = std::chrono::steady_clock::now();
            const double masked = call.run(a);
            slowest = std::max<std::chrono::duration<double>>(slowest, std::chrono::steady_clock::now() - start);
            unsigned unit_after = 0;
            const double unmasked = run_unmasked(call, a, unit_after);
            const bool same = std::bit_cast<std::uint64_t>(masked) == std::bit_cast<std::uint64_t>(unmasked) ||
                              (std::isnan(masked) && std::isnan(unmasked)) || unmasked == distr_error_value;
            if (!same && differing++ < 3)
                ADD_FAILURE() << masked << " but with traps " << unmasked << " at " << a[0] << ", " << a[1] << ", "
                              << a[2] << ", " << a[3];
            unit_changed += (unit_after & platform::fault::serious << 7) != 0;
        });
        EXPECT_EQ(differing, 0);
        EXPECT_EQ(unit_changed, 0);
        EXPECT_LT(slowest.count(), s_longest_call);
    }
}

// The error value and the error code come together, except where the header says that the last error is left alone.
TEST(Hostile, TheErrorValueComesWithItsCode)
{
    for (const Member& member : family()) {
        SCOPED_TRACE(member.name);
        int disagreements = 0;
        for_each_argument_list(member.arguments(), [&](const double* a) {
            platform::set_last_error(0);
            const double value = member.call(a);
            if (value == distr_error_value && platform::last_error() != distr_error_code)
                ++disagreements;
        });
        EXPECT_EQ(disagreements, 0);
    }
}

struct Invalid {
    const char* member;
    double arguments[4];
};

// One line for each check of a parameter.
static constexpr Invalid s_invalid[] = {
    {"d_beta", {0.5, 0, 1}},       {"d_beta", {0.5, 1, -1}},    {"d_binom", {1, -0.1, 5}},
    {"d_binom", {1, 1.1, 5}},      {"i_binom", {1, 0.5, 0.4}},  {"i_binom", {1, 0.5, -3}},
    {"d_cauchy", {1, 0, 0}},       {"i_cauchy", {1, 0, 0}},     {"v_cauchy", {0.5, 0, -1}},
    {"d_chi2", {1, 0.009}},        {"i_chi2", {1, 0.009}},      {"v_chi2", {0.5, 0.009}},
    {"v_chi2", {1e-6, 3}},         {"v_chi2", {0.999999, 3}},   {"d_expon", {1, 0}},
    {"i_expon", {1, 0}},           {"v_expon", {1, 1}},         {"d_extreme", {1, 0, 0}},
    {"i_extreme", {1, 0, 0}},      {"v_extreme", {0.5, 0, 0}},  {"v_extreme", {0, 0, 1}},
    {"d_f", {1, 0.99, 5}},         {"d_f", {1, 5, 0.99}},       {"i_f", {1, 0.009, 5}},
    {"i_f", {1, 5, 0.009}},        {"v_f", {-0.1, 5, 5}},       {"v_f", {1, 5, 5}},
    {"v_f", {0.5, 0, 5}},          {"d_gamma", {1, 0}},         {"d_geom", {1, -0.1}},
    {"i_geom", {1, 1.1}},          {"d_laplace", {1, 0, 0}},    {"i_laplace", {1, 0, -1}},
    {"d_logis", {1, 0, 0}},        {"v_logis", {1, 0, 1}},      {"i_normal", {1, 0, 0}},
    {"v_normal", {0, 0, 1}},       {"v_normal", {1, 0, 1}},     {"d_pareto", {2, 0}},
    {"i_pareto", {2, 0}},          {"v_pareto", {0.5, 0}},      {"d_poisson", {1, 0}},
    {"i_poisson", {1, -1}},        {"d_rayleigh", {1, 0}},      {"i_rayleigh", {1, 0}},
    {"v_rayleigh", {0.5, 0}},      {"i_student", {1, 0.009}},   {"d_weibull", {1, 1e-100, 1, 0}},
    {"d_weibull", {1, 1, 100, 0}}, {"i_weibull", {1, 1, 0, 0}}, {"v_weibull", {0.5, 0, 1, 0}},
    {"v_weibull", {0.5, 1, 0, 0}},
};

TEST(Hostile, InvalidParametersFail)
{
    for (const Invalid& c : s_invalid)
        for (const Member& member : family()) {
            if (std::string(c.member) != member.name)
                continue;
            SCOPED_TRACE(testing::Message() << c.member << " " << c.arguments[0] << ", " << c.arguments[1]);
            platform::set_last_error(0);
            EXPECT_EQ(member.call(c.arguments), distr_error_value);
            EXPECT_EQ(platform::last_error(), distr_error_code);
        }
}

} // namespace
} // namespace qmml::test
