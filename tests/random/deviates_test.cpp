#include <qmml/random.h>

#include <gtest/gtest.h>

#include <bit>
#include <cfenv>
#include <cmath>
#include <cstdint>
#include <limits>
#include <vector>

namespace {

class Deviates : public testing::Test {
protected:
    void SetUp() override { PushRndState(&m_record); }
    void TearDown() override { PopRndState(); }
    void restart() { m_record = {}; }

    RndState m_record = {};
};

TEST_F(Deviates, MatchAVerifiedImplementation)
{
    for (int expected : {9351, 8302, 3062, 19939, 29603, 6418})
        EXPECT_EQ(rand_(), expected);
    restart();
    for (double expected : {-0.85570076846, -0.80267449852, -0.05981592037, -1.01152526780})
        EXPECT_NEAR(znormal_(1.0), expected, 1e-11);
    restart();
    for (double expected : {2, 4, 2, 1, 1, 1, 6, 2, 3, 4, 5, 2})
        EXPECT_EQ(poisson_(3), expected);
    restart();
    EXPECT_EQ(uniform_(-2.5), 612850790 * 4.656613057391769e-10 * -2.5);
}

// The definition, spelled out with the runtime's logarithm.
TEST_F(Deviates, NormalChoosesByParity)
{
    for (int i = 0; i < 20000; ++i) {
        const RndState before = m_record;
        double a, b, s;
        do {
            a = 2 * rnd_(0) - 1;
            b = 2 * rnd_(0) - 1;
            s = a * a + b * b;
        } while (s >= 1);
        const int bits =
            std::popcount(std::bit_cast<std::uint64_t>(a)) + std::popcount(std::bit_cast<std::uint64_t>(b));
        const double expected = std::sqrt(-2 * std::log(s) / s) * (bits % 2 ? b : a) * 3;
        m_record = before;
        const double deviate = znormal_(3);
        ASSERT_NEAR(deviate, expected, 1e-14 * std::fabs(expected));
    }
}

TEST_F(Deviates, PoissonMultipliesUniforms)
{
    for (double mean : {0.01, 1.0, 30.0, 700.0, 740.0})
        for (int i = 0; i < 50; ++i) {
            const RndState before = m_record;
            const double threshold = std::exp(-mean);
            double expected = 0;
            for (double t = rnd_(0); t >= threshold; t *= rnd_(0))
                ++expected;
            m_record = before;
            ASSERT_EQ(poisson_(mean), expected) << mean;
        }
}

TEST_F(Deviates, PoissonAddsPartsOfALargeMean)
{
    for (const auto& parts : {std::vector<double>{500, 300}, {500, 500}, {500, 500, 240.5}}) {
        restart();
        double mean = 0, expected = 0;
        for (double part : parts) {
            mean += part;
            expected += poisson_(part);
        }
        restart();
        EXPECT_EQ(poisson_(mean), expected);
    }
}

TEST_F(Deviates, PoissonOfNoMeanTakesOneDraw)
{
    rnd_(0);
    const int after_one = m_record.seed;
    for (double mean : {0.0, -0.0, -1e300, -double(INFINITY), double(NAN)}) {
        restart();
        EXPECT_EQ(poisson_(mean), 0) << mean;
        EXPECT_EQ(m_record.seed, after_one) << mean;
    }
    EXPECT_EQ(poisson_(INFINITY), INFINITY);
    EXPECT_EQ(m_record.seed, after_one);
}

TEST_F(Deviates, SurviveUnmaskedTraps)
{
    std::fenv_t before;
    std::fegetenv(&before);
    std::feclearexcept(FE_ALL_EXCEPT);
    feenableexcept(FE_INVALID | FE_DIVBYZERO | FE_OVERFLOW);
    const double odd = std::numeric_limits<double>::signaling_NaN(), infinity = INFINITY, nan = NAN;
    for (double x : {0.0, 5e-324, 1e308, -1e308, infinity, -infinity, nan, odd, std::numeric_limits<double>::max()}) {
        for (int i = 0; i < 100; ++i) {
            const volatile double results[] = {uniform_(x), znormal_(x)};
            static_cast<void>(results);
        }
        inirnd_(x);
    }
    double sum = poisson_(740) + poisson_(800);
    for (double mean : {-1e308, -infinity, nan, odd})
        sum += poisson_(mean);
    std::fesetenv(&before);
    EXPECT_NEAR(sum, 1540, 200);
}

} // namespace
