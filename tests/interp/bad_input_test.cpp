// Hostile texts: an answer in time and memory proportional to the length.
#include <chrono>
#include <cmath>
#include <gtest/gtest.h>
#include <qmml/interp.h>
#include <random>
#include <string>

namespace {

std::string repeated(const std::string& piece, std::size_t length)
{
    std::string text;
    while (text.size() < length)
        text += piece;
    return text;
}

TEST(HostileFormula, OfAMegabyteIsAnsweredAtOnce)
{
    constexpr std::size_t megabyte = 1u << 20;
    const std::string texts[] = {repeated("(", megabyte),
                                 repeated(")", megabyte),
                                 repeated("x+", megabyte) + "x",
                                 repeated("1", megabyte),
                                 repeated("0.", megabyte),
                                 "0." + repeated("1", megabyte),
                                 repeated("1 ", megabyte),
                                 repeated("-", megabyte),
                                 repeated("sin(", megabyte),
                                 repeated("q", megabyte),
                                 repeated(" ", megabyte),
                                 repeated("x*(2+1)-3+", megabyte) + "1",
                                 repeated("1e99999999", megabyte),
                                 "q" + repeated(" q=", megabyte),
                                 repeated("~", megabyte),
                                 "1e" + repeated("9", megabyte),
                                 repeated(std::string("\xff\x01\x80"), megabyte),
                                 repeated("x^", megabyte) + "x",
                                 repeated("max(1,x)+", megabyte) + "1",
                                 repeated("not ", megabyte),
                                 repeated("//", megabyte)};
    for (const auto& text : texts) {
        const auto start = std::chrono::steady_clock::now();
        ExInterpreter interpreter(text.c_str(), 3);
        double result = 0.0;
        interpreter.ExpresCheck();
        interpreter.ExpresVal(&result, 1.0, 2.0, 3.0);
        const std::chrono::duration<double> time = std::chrono::steady_clock::now() - start;
        EXPECT_LT(time.count(), 2.0) << text.substr(0, 12); // a quadratic pass would take minutes
    }
}

TEST(HostileFormula, WithALongSumStillHasItsValue)
{
    const std::string text = repeated("1+", 1u << 20) + "1";
    ExInterpreter interpreter(text.c_str(), 0);
    double result = 0.0;
    ASSERT_EQ(interpreter.ExpresVal(&result, 0.0), 1);
    EXPECT_EQ(result, static_cast<double>((1u << 19) + 1));
}

TEST(HostileFormula, OfRandomBytesGivesAValueOrAnErrorInsideTheText)
{
    std::mt19937 random(7);
    for (int i = 0; i < 20000; ++i) {
        std::string text(random() % 40, ' ');
        for (char& c : text)
            c = random() % 3 == 0 ? static_cast<char>(1 + random() % 255) : "x1+(,)=<q.; "[random() % 12];
        ExInterpreter interpreter(text.c_str(), 3);
        double result = 0.0;
        if (interpreter.ExpresVal(&result, 1.0, 2.0, 3.0) == 0) {
            ASSERT_GE(interpreter.GetInterpreterErrorPos(), 0);
            ASSERT_LE(interpreter.GetInterpreterErrorPos(), static_cast<int>(text.size()));
            ASSERT_TRUE(std::isnan(result));
        }
    }
}

TEST(HostileFormula, MayBeNull)
{
    ExInterpreter interpreter(nullptr, 3);
    double result = 0.0;
    EXPECT_EQ(interpreter.ExpresVal(&result, 1.0, 2.0, 3.0), 0);
    EXPECT_EQ(interpreter.GetInterpreterError(), 0);
    EXPECT_STREQ(interpreter.GetInterpreterErrorDescr(), "Expression vide");
}

} // namespace
