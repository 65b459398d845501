#include <qmml/missing.h>

#include <gtest/gtest.h>

#include <cfenv>
#include <csignal>

namespace {

template <class Real>
void divide_by_zero()
{
    volatile Real zero = 0;
    volatile Real quotient = 1 / zero;
    static_cast<void>(quotient);
}

template <class Real>
void round_a_third()
{
    volatile Real three = 3;
    volatile Real third = 1 / three;
    static_cast<void>(third);
}

class ExceptionMask : public testing::Test {
protected:
    void SetUp() override { std::fegetenv(&m_before); }
    void TearDown() override { std::fesetenv(&m_before); }

private:
    std::fenv_t m_before;
};

TEST_F(ExceptionMask, LetsOnlyTheSeriousFaultsTrap)
{
    divide_by_zero<double>(); // a flag that stands raised must not trap when its mask goes
    std::fesetround(FE_UPWARD);
    EXPECT_EQ(SetFPUExceptionMask(), 0x80003u);
    EXPECT_EQ(fegetexcept(), FE_INVALID | FE_DIVBYZERO | FE_OVERFLOW);
    EXPECT_EQ(std::fegetround(), FE_TONEAREST);
    round_a_third<double>();
    round_a_third<long double>();
}

TEST_F(ExceptionMask, ReachesBothUnits)
{
    const auto trap = [](void (*fault)()) {
        std::signal(SIGFPE, SIG_DFL); // a sanitizer may have taken it
        SetFPUExceptionMask();
        fault();
    };
    EXPECT_EXIT(trap(divide_by_zero<double>), testing::KilledBySignal(SIGFPE), "");
    EXPECT_EXIT(trap(divide_by_zero<long double>), testing::KilledBySignal(SIGFPE), "");
}

} // namespace
