// Studentized range: published checks, exact probabilities within the method's error, the quantiles' rules.

#include "platform/levels.h"

#include <cmath>
#include <gtest/gtest.h>
#include <limits>
#include <qmml/distrib.h>

namespace {

// The method's own answers from an independent program; exact values by numerical integration.
struct Probability {
    double q, v, r, method, exact;
};
constexpr Probability s_probabilities[] = {
    {3.5, 10, 3, 0.9227602348, 0.92290},    {8, 4, 6, 0.9725047081, 0.97258},   {4, 20, 5, 0.9303410191, 0.93041},
    {6, 1, 2, 0.8523625542, 0.85264},       {3.6, 2, 4, 0.7095913427, 0.70969}, {3.314, 120, 3, 0.9461708894, 0.94625},
    {3.314, 121, 3, 0.9499499710, 0.94996},
};

TEST(StudentizedRange, HasTheProbabilitiesOfItsMethodAtEveryLevel)
{
    for (const auto level : qmml::platform::supported_levels()) {
        const qmml::platform::ForcedLevel forced(level);
        for (const Probability& c : s_probabilities) {
            SCOPED_TRACE(testing::Message() << c.q << ' ' << c.v << ' ' << c.r);
            short fault = 9;
            EXPECT_NEAR(prtrng(c.q, c.v, c.r, &fault), c.method, 1e-9);
            EXPECT_EQ(fault, 0);
            EXPECT_NEAR(prtrng(c.q, c.v, c.r, nullptr), c.exact, 4e-4);
            EXPECT_EQ(prtrng(c.q, c.v, c.r, &fault), [&] {
                const qmml::platform::ForcedLevel baseline(qmml::platform::Level::baseline);
                return prtrng(c.q, c.v, c.r, nullptr);
            }());
        }
    }
}

TEST(StudentizedRange, HasTheQuantilesOfItsRule)
{
    struct Quantile {
        double p, v, r, q;
    };
    const Quantile starts[] = {{0.95, 10, 3, 3.88097923038711},
                               {0.9, 20, 5, 3.6745701104275},
                               {0.99, 5, 4, 7.60847188825953},
                               {0.95, 120, 3, 3.34261459685632},
                               {0.8, 10, 2, 1.93209424175965}};
    const Quantile quantiles[] = {{0.95, 10, 3, 3.88097923038711}, {0.9, 20, 5, 3.73704207658},
                                  {0.99, 5, 4, 7.82207171473},     {0.95, 120, 3, 3.35707352302},
                                  {0.95, 1, 3, 26.6996564732},     {0.5, 10, 3, 1.6449966430664062},
                                  {0.1, 10, 3, 0.6219253540039062}};
    short fault = 9;
    for (const Quantile& c : starts) {
        EXPECT_NEAR(qtrngo(c.p, c.v, c.r, &fault), c.q, 1e-13 * c.q);
        EXPECT_EQ(fault, 0);
    }
    for (const Quantile& c : quantiles) {
        EXPECT_NEAR(qtrng(c.p, c.v, c.r, &fault), c.q, 1e-10 * c.q);
        EXPECT_EQ(fault, 0);
    }
    EXPECT_EQ(qinter(0.5, 10, 3, &fault), 1.6449966430664062); // a dyadic number
}

TEST(StudentizedRange, StoresItsFaults)
{
    short fault = 9;
    const auto code = [&](double) { return fault; };
    EXPECT_EQ(code(prtrng(3, 0.5, 3, &fault)), 1);
    EXPECT_EQ(code(prtrng(3, 10, 1.9, &fault)), 1);
    EXPECT_EQ(code(prtrng(-1, 10, 3, &fault)), 0);
    EXPECT_EQ(prtrng(0, 10, 3, &fault), 0);
    EXPECT_EQ(code(qtrng(0.95, 10, 1, &fault)), 1);
    EXPECT_EQ(code(qtrng(0.5, 10, 1, &fault)), 1);
    EXPECT_EQ(code(qinter(0.5, 0, 3, &fault)), 1);
    EXPECT_EQ(code(qtrngo(1, 10, 3, &fault)), 1);
    EXPECT_EQ(code(qtrng(1 - 1e-9, 2, 3, &fault)), 2); // the probability levels off below
    EXPECT_EQ(qinter(-0.5, 10, 3, &fault), 0);
    EXPECT_EQ(fault, 2);
    const double inf = std::numeric_limits<double>::infinity(), nan = std::numeric_limits<double>::quiet_NaN();
    for (double q : {inf, nan, 1e300, 1e-300})
        for (double v : {1.0, inf, nan, 1e300})
            for (double r : {2.0, inf, nan, 1e300}) { // these end
                prtrng(q, v, r, &fault);
                qtrng(q, v, r, &fault);
                qtrng(0.95, v, r, &fault);
            }
}

} // namespace
