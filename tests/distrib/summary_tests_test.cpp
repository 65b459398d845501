// Tests from summary values: statistics and tails against Boost, stages of failure.

#include <boost/math/distributions/binomial.hpp>
#include <boost/math/distributions/normal.hpp>
#include <cmath>
#include <gtest/gtest.h>
#include <qmml/distrib.h>

namespace {

struct Report {
    double z = 9, p = 9;
    int status = 9, result = 9;
};

template <class Call>
Report report(Call call)
{
    Report r;
    r.result = call(&r.z, &r.p, &r.status);
    EXPECT_EQ(r.result, r.status == 0);
    return r;
}

double tail(double z)
{
    return boost::math::cdf(boost::math::normal(), -std::abs(z));
}

void expect_z(const Report& r, double z, int one_sided)
{
    EXPECT_EQ(r.status, 0);
    EXPECT_NEAR(r.z, z, 1e-14 * std::abs(z));
    EXPECT_NEAR(r.p, (one_sided ? 1 : 2) * tail(z), 1e-10);
}

TEST(SummaryTests, HaveTheirStatisticsAndTails)
{
    for (int one_sided : {0, 1, 2}) {
        SCOPED_TRACE(one_sided);
        expect_z(report([&](auto... out) { return BinomialTestSingleSample(0.4, 0.55, 60, one_sided, 1, out...); }),
                 0.15 / std::sqrt(0.24 / 60), one_sided);
        expect_z(report([&](auto... out) { return BinomialTestTwoSamples(0.3, 0.5, 40, 60, one_sided, 0, out...); }),
                 -0.2 / std::sqrt(0.21 / 40 + 0.25 / 60), one_sided);
        expect_z(report([&](auto... out) { return BinomialTestTwoSamples(0.3, 0.5, 40, 60, one_sided, 1, out...); }),
                 -0.2 / std::sqrt((1.0 / 40 + 1.0 / 60) * 0.42 * 0.58), one_sided);
        expect_z(report([&](auto... out) { return zTestSingleSampleMean(10, 11, 4, 25, one_sided, out...); }), 1.25,
                 one_sided);
        expect_z(report([&](auto... out) { return zTestTwoSampleMeans(5, 4, 2, 3, 16, 36, one_sided, 0, out...); }),
                 1 / std::sqrt(0.5), one_sided);
        expect_z(report([&](auto... out) { return zTestTwoSampleMeans(5, 4, 2, 3, 16, 36, one_sided, 1, out...); }),
                 1 / (std::sqrt((15 * 4 + 35 * 9) / 50.0) * std::sqrt(1.0 / 16 + 1.0 / 36)), one_sided);
    }
}

TEST(SummaryTests, AnExactOneSidedBinomialTestLooksBeyondTheCount)
{
    const boost::math::binomial_distribution<> binomial(20, 0.25);
    const auto exact = [](double phat) {
        return report([=](auto... out) { return BinomialTestSingleSample(0.25, phat, 20, 1, 0, out...); });
    };
    EXPECT_NEAR(exact(0.25).p, boost::math::cdf(binomial, 5), 1e-12);
    EXPECT_NEAR(exact(0.1).p, boost::math::cdf(binomial, 2), 1e-12);
    EXPECT_NEAR(exact(0.5).p, boost::math::cdf(complement(binomial, 10)), 1e-12);
    EXPECT_EQ(exact(0.5).z, 0);
    EXPECT_EQ(report([](auto... out) { return BinomialTestSingleSample(0.01, 0.04, 20, 1, 0, out...); }).p, 0);
}

TEST(SummaryTests, StoreTheStageThatFailed)
{
    struct Failure {
        int status;
        Report report;
    };
    const Failure failures[] = {
        {1, report([](auto... out) { return BinomialTestSingleSample(1, 0.5, 9, 1, 0, out...); })},
        {1, report([](auto... out) { return BinomialTestSingleSample(0.5, 1.1, 9, 1, 0, out...); })},
        {2, report([](auto... out) { return BinomialTestSingleSample(0.5, 0.5, 1, 1, 0, out...); })},
        {1, report([](auto... out) { return BinomialTestTwoSamples(-0.1, 0.5, 1, 1, 1, 0, out...); })},
        {2, report([](auto... out) { return BinomialTestTwoSamples(0.1, 0.5, 1, 0, 1, 0, out...); })},
        {3, report([](auto... out) { return BinomialTestTwoSamples(0, 0, 5, 5, 1, 1, out...); })},
        {1, report([](auto... out) { return zTestSingleSampleMean(0, 1, 0, 5, 1, out...); })},
        {2, report([](auto... out) { return zTestSingleSampleMean(0, 1, 1, 0.5, 1, out...); })},
        {1, report([](auto... out) { return zTestTwoSampleMeans(0, 1, 1, -1, 5, 5, 1, 0, out...); })},
        {2, report([](auto... out) { return zTestTwoSampleMeans(0, 1, 1, 1, 0, 5, 1, 0, out...); })},
    };
    for (const Failure& failure : failures) {
        EXPECT_EQ(failure.report.status, failure.status);
        EXPECT_EQ(failure.report.z, 0);
        EXPECT_EQ(failure.report.p, 1);
    }
    const Report undefined = report([](auto... out) { return zTestTwoSampleMeans(0, 1, 1, 1, 1, 1, 1, 1, out...); });
    EXPECT_EQ(undefined.status, 0);
    EXPECT_TRUE(std::isnan(undefined.p));
}

} // namespace
