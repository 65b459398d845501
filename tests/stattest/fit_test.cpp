// A fit is right when the likelihood's derivatives vanish there: the equations are written out in extended precision,
// with Boost's digamma.
#include "calls.h"

#include <boost/math/special_functions/digamma.hpp>
#include <gtest/gtest.h>

#include <cmath>
#include <functional>
#include <string>

namespace qmml::test {
namespace {

using boost::math::digamma;
using Real = long double;

struct Fit {
    int result, code = s_no_code;
    double a = s_unwritten, b = s_unwritten;
};

using TwoParameters = int (*)(int, const double*, double, double*, double*, int*);
using OneParameter = int (*)(int, const double*, double, double*, int*);

Fit run(TwoParameters export_, const Doubles& data, double marker = s_missing)
{
    Fit f{};
    f.result = export_(static_cast<int>(data.size()), data.data(), marker, &f.a, &f.b, &f.code);
    return f;
}

Fit run(OneParameter export_, const Doubles& data, double marker = s_missing)
{
    Fit f{};
    f.result = export_(static_cast<int>(data.size()), data.data(), marker, &f.a, &f.code);
    return f;
}

Fit weibull(const Doubles& data, double location)
{
    Fit f{};
    double given = location;
    f.result =
        FitWeibullDistribution(static_cast<int>(data.size()), data.data(), s_missing, &f.a, &f.b, &given, &f.code);
    EXPECT_EQ(std::bit_cast<std::uint64_t>(given), std::bit_cast<std::uint64_t>(location));
    return f;
}

Real mean(const Doubles& data, const std::function<Real(Real)>& f)
{
    Real sum = 0;
    for (const double v : data)
        sum += f(v);
    return sum / static_cast<Real>(data.size());
}

// The score, and how much it changes when the parameter changes by its promised error: the score must be smaller.
void expect_root(const std::function<Real(Real)>& score, double parameter)
{
    const Real p = parameter, error = 1e-9L * p;
    EXPECT_LT(score(p - error) * score(p + error), 0) << parameter;
}

Doubles shaped(int n, unsigned seed, double centre, double width)
{
    Doubles sample = normal_sample(n, seed, centre, width);
    for (double& v : sample)
        v = std::exp(v);
    return sample;
}

TEST(Fit, ClosedForms)
{
    // R: mean(x), sqrt(mean((x - mean(x))^2)), the same of log(x), 1 / mean(x), sqrt(mean(x^2) / 2)
    double coded = 0;
    NANSet(2, &coded);
    const Doubles x = {1.5, 2.25, 99, 4, 0.75, coded, 3};
    EXPECT_NEAR(run(FitNormalDistribution, x, 99).a, 2.3, 1e-15);
    EXPECT_NEAR(run(FitNormalDistribution, x, 99).b, 1.1335784048754634, 1e-15);
    EXPECT_NEAR(run(FitLognormalDistribution, x, 99).a, 0.68272398033214254, 1e-15);
    EXPECT_NEAR(run(FitLognormalDistribution, x, 99).b, 0.58360459116743557, 1e-15);
    EXPECT_NEAR(run(FitExponentialDistribution, x, 99).a, 1 / 2.3, 1e-15);
    EXPECT_NEAR(run(FitRayleighDistribution, x, 99).a, 1.8131464364468746, 1e-15);
    // Far out and close together nothing is lost.
    EXPECT_EQ(run(FitNormalDistribution, {-1.5e308, 1.5e308}).b, 1.5e308);
    EXPECT_EQ(run(FitNormalDistribution, {1e12, 1e12 + 0x1p-10}).b, 0x1p-11);
    EXPECT_DOUBLE_EQ(run(FitRayleighDistribution, {1e-300}).a, 1e-300 * std::sqrt(0.5));
    EXPECT_NEAR(run(FitLognormalDistribution, {1, 1 + 0x1p-50}).b / 0x1p-51, 1, 1e-12);
}

TEST(Fit, GammaSolvesItsEquations)
{
    for (const double width : {0.01, 0.3, 1.0, 4.0}) {
        const Doubles x = shaped(200, 1, 2, width);
        const Fit f = run(FitGammaDistribution, x);
        ASSERT_EQ(f.code, 0);
        const Real m = mean(x, [](Real v) { return v; }), logs = mean(x, [](Real v) { return std::log(v); });
        EXPECT_NEAR(f.a * f.b, static_cast<double>(m), 1e-9 * f.a * f.b);
        expect_root([&](Real k) { return std::log(k) - digamma(k) - (std::log(m) - logs); }, f.b);
    }
}

TEST(Fit, WeibullAndExtremeSolveTheirEquations)
{
    for (const double width : {0.001, 0.3, 4.0})
        for (const double location : {0.0, -2.5}) {
            Doubles z = shaped(150, 2, 1, width), x;
            for (double& v : z) {
                x.push_back(v + location);
                v = x.back() - location; // as rounded
            }
            const Fit f = weibull(x, location);
            ASSERT_EQ(f.code, 0);
            expect_root(
                [&](Real k) {
                    const Real powers = mean(z, [&](Real v) { return std::pow(v, k); });
                    return mean(z, [&](Real v) { return std::pow(v, k) * std::log(v); }) / powers - 1 / k -
                           mean(z, [](Real v) { return std::log(v); });
                },
                f.b);
            const Real k = f.b;
            EXPECT_NEAR(f.a / static_cast<double>(std::pow(mean(z, [&](Real v) { return std::pow(v, k); }), 1 / k)), 1,
                        1e-9);
        }
    for (const double width : {1e-6, 1.0, 1e5}) {
        const Doubles x = normal_sample(150, 3, 10, width);
        const Fit f = run(FitExtremeDistribution, x);
        ASSERT_EQ(f.code, 0);
        expect_root(
            [&](Real b) {
                const auto weight = [&](Real v) { return std::exp((x[0] - v) / b); };
                return b - mean(x, [](Real v) { return v; }) +
                       mean(x, [&](Real v) { return v * weight(v); }) / mean(x, weight);
            },
            f.b);
        const Real b = f.b;
        const Real location = x[0] - b * std::log(mean(x, [&](Real v) { return std::exp((x[0] - v) / b); }));
        EXPECT_NEAR(f.a, static_cast<double>(location), 1e-9 * std::abs(f.a));
    }
}

TEST(Fit, BetaSolvesItsEquations)
{
    for (const double centre : {-3.0, 0.0, 2.0})
        for (const double width : {0.02, 0.7, 6.0}) {
            Doubles x = normal_sample(120, 4, centre, width);
            for (double& v : x)
                v = 1 / (1 + std::exp(-v));
            const Fit f = run(FitBetaDistribution, x);
            ASSERT_EQ(f.code, 0) << centre << " " << width;
            const Real logs = mean(x, [](Real v) { return std::log(v); }),
                       rests = mean(x, [](Real v) { return std::log1p(-v); });
            // The one parameter given the other: at the maximum both equations hold.
            expect_root([&](Real a) { return digamma(a) - digamma(a + f.b) - logs; }, f.a);
            expect_root([&](Real b) { return digamma(b) - digamma(f.a + b) - rests; }, f.b);
        }
}

// Samples that hardly vary, or do so wildly. Two points at distance 2d about m have, to first order, the shape (m /
// d)^2.
TEST(Fit, ConvergesAtTheEnds)
{
    const double d = 0x1p-52;
    const Fit gamma = run(FitGammaDistribution, {1, 1 + 2 * d});
    EXPECT_NEAR(gamma.b * d * d, 1, 1e-9);
    const Fit beta = run(FitBetaDistribution, {0.25, 0.25 + d / 2}); // m (1 - m) / variance
    EXPECT_NEAR((beta.a + beta.b) * (d / 4) * (d / 4) / (0.25 * 0.75), 1, 1e-9);
    EXPECT_NEAR(beta.a / beta.b, 1.0 / 3, 1e-9);
    // The shape of Weibull goes with the inverse of the logarithm's scale.
    const Fit wide = weibull({1, std::exp(1.0)}, 0), narrow = weibull({1, 1 + 0x1p-45}, 0);
    EXPECT_NEAR(narrow.b * 0x1p-45 / wide.b, 1, 1e-9);
    for (const Doubles& x : {Doubles{1e-300, 1e300}, Doubles{5e-324, 1}, Doubles{1e-320, 1e-310, 2e-310}}) {
        EXPECT_EQ(run(FitGammaDistribution, x).code, 0);
        EXPECT_EQ(weibull(x, 0).code, 0);
        EXPECT_EQ(run(FitExtremeDistribution, x).code, 0);
    }
    EXPECT_EQ(run(FitBetaDistribution, {1e-300, 1 - 0x1p-53, 0.5}).code, 0);
    EXPECT_EQ(run(FitBetaDistribution, {1e-9, 2e-9}).code, 0);
}

TEST(Fit, Codes)
{
    const struct {
        const char* name;
        std::function<Fit(const Doubles&)> fit;
        Doubles constant; // 2, or 0 for the families with one parameter
        Doubles outside;
    } cases[] = {
        {"normal", [](const Doubles& x) { return run(FitNormalDistribution, x); }, {3, 3}, {1, INFINITY}},
        {"lognormal", [](const Doubles& x) { return run(FitLognormalDistribution, x); }, {3, 3}, {1, 0}},
        {"exponential", [](const Doubles& x) { return run(FitExponentialDistribution, x); }, {0, 0}, {1, -1}},
        {"rayleigh", [](const Doubles& x) { return run(FitRayleighDistribution, x); }, {0}, {1, -1}},
        {"beta", [](const Doubles& x) { return run(FitBetaDistribution, x); }, {0.5, 0.5}, {0.5, 1}},
        {"gamma", [](const Doubles& x) { return run(FitGammaDistribution, x); }, {3, 3}, {1, 0}},
        {"extreme", [](const Doubles& x) { return run(FitExtremeDistribution, x); }, {-3, -3}, {1, -INFINITY}},
        {"weibull", [](const Doubles& x) { return weibull(x, 0.25); }, {3, 3}, {1, 0.25}},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        EXPECT_EQ(c.fit({}).code, 1);
        EXPECT_EQ(c.fit({s_missing, s_missing}).code, 1);
        EXPECT_EQ(c.fit(c.constant).code, 2);
        EXPECT_EQ(c.fit(c.outside).code, 3);
        EXPECT_EQ(c.fit(c.outside).result, 1);
        EXPECT_EQ(c.fit(c.outside).a, s_unwritten);
    }
    EXPECT_EQ(run(FitGammaDistribution, {1, 2, s_missing}, 7).code, 3); // the NaN counts as present
    EXPECT_EQ(run(FitGammaDistribution, {-1}).code, 1);
    EXPECT_EQ(weibull({1, 2}, s_missing).code, 3);
    EXPECT_EQ(run(FitExponentialDistribution, {2}).code, 0);
    EXPECT_EQ(run(FitExponentialDistribution, {3, 3, 0}).a, 0.5);
}

} // namespace
} // namespace qmml::test
