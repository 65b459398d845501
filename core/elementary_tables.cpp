#include "core/elementary_tables.h"

#include <cstddef>

// The compiler works the tables out, in pairs of numbers with some hundred bits.
namespace qmml::elementary {
namespace {

struct Pair {
    double high, low;
};

constexpr Pair quick_sum(double a, double b)
{
    const double sum = a + b;
    return {sum, b - (sum - a)};
}

constexpr Pair sum(double a, double b)
{
    const double s = a + b;
    const double t = s - a;
    return {s, (a - (s - t)) + (b - t)};
}

// T. J. Dekker, A floating-point technique for extending the available precision, Numer. Math. 18 (1971), 224-242.
constexpr Pair product(double a, double b)
{
    constexpr double splitter = 134217729.0; // 2^27 + 1
    const double a1 = splitter * a - (splitter * a - a), b1 = splitter * b - (splitter * b - b);
    const double a2 = a - a1, b2 = b - b1;
    const double p = a * b;
    return {p, ((a1 * b1 - p) + a1 * b2 + a2 * b1) + a2 * b2};
}

constexpr Pair operator+(Pair a, Pair b)
{
    const Pair s = sum(a.high, b.high);
    return quick_sum(s.high, s.low + (a.low + b.low));
}

constexpr Pair operator*(Pair a, Pair b)
{
    const Pair p = product(a.high, b.high);
    return quick_sum(p.high, p.low + (a.high * b.low + a.low * b.high));
}

constexpr Pair operator/(Pair a, double b)
{
    const double q = a.high / b;
    const Pair p = product(q, b);
    return quick_sum(q, ((a.high - p.high) - p.low + a.low) / b);
}

constexpr Pair s_ln2 = {0x1.62e42fefa39efp-1, 0x1.abc9e3b39803fp-56};

// By its series, for |x| below 1.
constexpr Pair exponential(Pair x)
{
    Pair result = {1.0, 0.0}, term = {1.0, 0.0};
    for (int k = 1; k <= 40; ++k) {
        term = term * x / k;
        result = result + term;
    }
    return result;
}

// By the series of 2 artanh((x - 1)/(x + 1)), for x near 1.
constexpr Pair logarithm(double x)
{
    const Pair denominator = sum(x, 1.0); // exact for ten bits: its low part is 0
    const Pair t = Pair{x - 1.0, 0.0} / denominator.high;
    const Pair square = t * t;
    Pair result = t, power = t;
    for (int k = 3; k <= 61; k += 2) {
        power = power * square;
        result = result + power / k;
    }
    return {2.0 * result.high, 2.0 * result.low};
}

// To a multiple of a power of two, for numbers that leave room for it.
constexpr double rounded(double x, double unit)
{
    const double magic = 0x1.8p52 * unit;
    return (x + magic) - magic;
}

constexpr std::array<ExponentialEntry, s_table_size> make_exponentials()
{
    std::array<ExponentialEntry, s_table_size> table{};
    for (int j = 0; j < s_table_size; ++j) {
        const Pair value = exponential(s_ln2 * Pair{j / double{s_table_size}, 0.0});
        table[static_cast<std::size_t>(j)] = {value.low / value.high, value.high};
    }
    return table;
}

constexpr std::array<LogarithmEntry, s_table_size> make_logarithms()
{
    std::array<LogarithmEntry, s_table_size> table{};
    for (int j = 0; j < s_table_size; ++j) {
        // The parts run from 0x1.6p-1 up to 1 in steps of 1/256, then on to 0x1.6p0 in steps of 1/128.
        const int below_one = 80;
        const double middle = j < below_one ? 0x1.6p-1 + (j + 0.5) / 256 : 1.0 + (j - below_one + 0.5) / 128;
        double reciprocal = rounded(1.0 / middle, 0x1p-9);
        if (j == below_one - 1 || j == below_one)
            reciprocal = 1.0;
        const Pair minus = logarithm(reciprocal);
        const double high = -rounded(minus.high, 0x1p-42);
        table[static_cast<std::size_t>(j)] = {reciprocal, high, (-minus.high - high) - minus.low, 0.0};
    }
    return table;
}

} // namespace

constinit const std::array<ExponentialEntry, s_table_size> s_exponentials = make_exponentials();
constinit const std::array<LogarithmEntry, s_table_size> s_logarithms = make_logarithms();

} // namespace qmml::elementary
