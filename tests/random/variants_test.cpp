#include <qmml/random.h>

#include <gtest/gtest.h>

#include <cmath>
#include <ctime>
#include <string>

namespace {

QmmlVariant of_kind(int kind, const QmmlVariant* ref = nullptr)
{
    QmmlVariant v = {};
    v.kind = kind;
    v.value.ref = ref;
    return v;
}
QmmlVariant of(int i)
{
    QmmlVariant v = of_kind(QMML_INT32);
    v.value.i = i;
    return v;
}
QmmlVariant of(double d)
{
    QmmlVariant v = of_kind(QMML_DOUBLE);
    v.value.d = d;
    return v;
}
QmmlVariant of(const char* text)
{
    QmmlVariant v = of_kind(QMML_TEXT);
    v.value.text = text;
    return v;
}
QmmlVariant reference(const QmmlVariant* to)
{
    return of_kind(QMML_INT32 | QMML_BYREF, to);
}

double after_seeding(double x)
{
    inirnd_(x);
    return rnd_(0);
}

TEST(TumoRnd, RepeatsSeedsOrDraws)
{
    const double first = TumoRnd(of(0)); // nothing to repeat yet, or the last number: then it repeats
    EXPECT_EQ(TumoRnd(of(0)), first);
    EXPECT_NE(TumoRnd(of(1)), first);
    EXPECT_EQ(TumoRnd(of(-7)), after_seeding(7));
    EXPECT_EQ(TumoRnd(of(-7)), after_seeding(7));
    EXPECT_EQ(TumoRnd(of(INT32_MIN)), after_seeding(2147483648.0));
    EXPECT_EQ(TumoRnd(of(0)), after_seeding(2147483648.0));
}

// A conversion to k < 0 shows as the stream of seed -k, and to 0 as the last number; anything else draws.
TEST(TumoRnd, ConvertsItsArgument)
{
    const QmmlVariant minus_seven = of(-7), empty = of_kind(QMML_EMPTY), inner = reference(&minus_seven);
    enum Effect { draws, repeats, seeds };
    const struct {
        const char* name;
        QmmlVariant argument;
        Effect effect;
        double seed = 0;
    } cases[] = {
        {"empty", empty, draws},
        {"missing", of_kind(QMML_ERROR), draws},
        {"unknown kind", of_kind(77), draws},
        {"integer 1", of(1), draws},
        {"-2.5", of(-2.5), seeds, 2},
        {"-3.5", of(-3.5), seeds, 4},
        {"-2.5000001", of(-2.5000001), seeds, 3},
        {"0.5", of(0.5), repeats},
        {"-0.5", of(-0.5), repeats},
        {"lowest", of(-2147483648.5), seeds, 2147483648},
        {"too low", of(-2147483648.75), draws},
        {"too high", of(2147483647.5), draws},
        {"huge", of(-1e300), draws},
        {"NaN", of(double(NAN)), draws},
        {"infinite", of(-double(INFINITY)), draws},
        {"text", of(" \t-7\n"), seeds, 7},
        {"text with decimals", of("-.65e1"), seeds, 6},
        {"text zero", of("0.00"), repeats},
        {"tiny text", of("-1e-999"), repeats},
        {"huge text", of("-1e999"), draws},
        {"plus", of("+0"), repeats},
        {"comma", of("-7,0"), draws},
        {"rest", of("-7x"), draws},
        {"two signs", of("--7"), draws},
        {"hexadecimal", of("-0x7"), draws},
        {"word", of("-inf"), draws},
        {"no digits", of("-."), draws},
        {"bare exponent", of("-7e"), draws},
        {"blank", of("  "), draws},
        {"null text", of_kind(QMML_TEXT), draws},
        {"reference", reference(&minus_seven), seeds, 7},
        {"reference to empty", reference(&empty), draws},
        {"null reference", reference(nullptr), draws},
        {"reference to a reference", reference(&inner), draws},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        inirnd_(99);
        const double last = TumoRnd(of(1));
        RndState ahead = *reinterpret_cast<RndState*>(GetRndState());
        PushRndState(&ahead);
        const double next = rnd_(0);
        PopRndState();
        const double result = TumoRnd(c.argument);
        const double expected = c.effect == seeds ? after_seeding(c.seed) : c.effect == repeats ? last : next;
        EXPECT_EQ(result, expected);
    }
}

TEST(TumoRandomize, SeedsWithADouble)
{
    const QmmlVariant number = of(12.5);
    const struct {
        QmmlVariant argument;
        double seed;
    } cases[] = {
        {of(-3), 3},         {number, 12.5},   {of(double(NAN)), 0}, {reference(&number), 12.5},
        {of("4e3"), 4000.0}, {of("1e999"), 0},
    };
    for (const auto& c : cases) {
        EXPECT_EQ(TumoRandomize(c.argument), 0);
        const double first = rnd_(0);
        EXPECT_EQ(first, after_seeding(c.seed));
    }
}

TEST(TumoRandomize, FallsBackToTheClock)
{
    for (const auto& argument : {of_kind(QMML_EMPTY), of_kind(QMML_ERROR), of("x")}) {
        const auto before = std::time(nullptr);
        TumoRandomize(argument);
        const double first = rnd_(0);
        bool found = false;
        for (auto t = before; t <= std::time(nullptr); ++t)
            found = found || first == after_seeding(static_cast<double>(t));
        EXPECT_TRUE(found);
    }
}

} // namespace
