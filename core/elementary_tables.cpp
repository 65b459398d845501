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

// By the series of 2 artanh((x - 1)/(x + 1)), for x near 1 of so few bits that x + 1 is exact.
constexpr Pair logarithm(double x)
{
    const Pair t = Pair{x - 1.0, 0.0} / (x + 1.0);
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

// How far the product of a number and its rounded reciprocal is from 1.
constexpr double reciprocal_error(double x)
{
    const Pair one = product(x, 1.0 / x);
    const double error = (one.high - 1.0) + one.low;
    return error < 0 ? -error : error;
}

// The number near `middle` whose reciprocal is rounded least.
constexpr double centre_near(double middle)
{
    double best = middle;
    for (int i = -64; i <= 64; ++i) {
        const double candidate = middle + i * 0x1p-20;
        if (reciprocal_error(candidate) < reciprocal_error(best))
            best = candidate;
    }
    return best;
}

constexpr std::array<LogarithmEntry, s_table_size> make_logarithms()
{
    std::array<LogarithmEntry, s_table_size> table{};
    for (int j = 0; j < s_table_size; ++j) {
        // The parts run from 0x1.6p-1 up to 1 in steps of 1/256, then on to 0x1.6p0 in steps of 1/128.
        constexpr int below_one = 80;
        const bool next_to_one = j >= below_one - 2 && j <= below_one;
        const double middle = j < below_one ? 0x1.6p-1 + (j + 0.5) / 256 : 1.0 + (j - below_one + 0.5) / 128;
        const double centre = next_to_one ? 1.0 : centre_near(middle);
        const Pair ln = logarithm(centre);
        const double high = rounded(ln.high, 0x1p-42);
        table[static_cast<std::size_t>(j)] = {centre, 1.0 / centre, high, (ln.high - high) + ln.low};
    }
    return table;
}

} // namespace

constinit const std::array<ExponentialEntry, s_table_size> s_exponentials = make_exponentials();
constinit const std::array<LogarithmEntry, s_table_size> s_logarithms = make_logarithms();

} // namespace qmml::elementary
