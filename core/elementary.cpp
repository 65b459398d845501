#include "core/elementary.h"

#include "core/missing.h"
#include "platform/wide_product.h"

#include <limits>

namespace qmml::elementary {

static constexpr double s_infinity = std::numeric_limits<double>::infinity();

// Not folded by the compiler: the division is there for the fault that it raises.
static double divide_by_zero(double numerator) noexcept
{
    volatile double zero = 0.0;
    volatile double quotient = numerator / zero;
    return quotient;
}

static double undefined() noexcept
{
    (void)divide_by_zero(0.0);
    return s_missing;
}

double exp_special(double x) noexcept
{
    if (is_nan(x))
        return x + x;
    if (magnitude_bits(x) == 0x7ff0000000000000u)
        return x > 0 ? x : 0.0;
    return exp_full_range<ScalarLane>(x);
}

double log_special(double x) noexcept
{
    if (is_nan(x) || x == s_infinity)
        return x + x;
    if (x < 0)
        return undefined();
    if (x == 0)
        return divide_by_zero(-1.0);
    return log_normal_range<ScalarLane>(x * 0x1p54, s_exponent_origin + 54.0);
}

// 2/pi behind the binary point, with 64 zeros in front: the angles of half a million upwards start inside them.
static constexpr std::uint64_t s_two_over_pi[] = {
    0,
    0xa2f9836e4e441529u,
    0xfc2757d1f534ddc0u,
    0xdb6295993c439041u,
    0xfe5163abdebbc561u,
    0xb7246e3a424dd2e0u,
    0x06492eea09d1921cu,
    0xfe1deb1cb129a73eu,
    0xe88235f52ebb4484u,
    0xe99c7026b45f7e41u,
    0x3991d639835339f4u,
    0x9c845f8bbdf9283bu,
    0x1ff897ffde05980fu,
    0xef2f118b5a0a6d1fu,
    0x6d367ecf27cb09b7u,
    0x4f463f669e5fea2du,
    0x7527bac7ebe5f17bu,
    0x3d0739f78a5292eau,
    0x6bfb5fb11f8d5d08u,
    0x56033046fc7b6babu,
};

// 64 bits of the table, the first of them `bit` places in.
static std::uint64_t window(unsigned bit) noexcept
{
    const unsigned word = bit / 64;
    const unsigned shift = bit % 64;
    if (shift == 0)
        return s_two_over_pi[word];
    return s_two_over_pi[word] << shift | s_two_over_pi[word + 1] >> (64 - shift);
}

// Payne and Hanek, Radian reduction for trigonometric functions, ACM SIGNUM Newsletter 18 (1983): of the product with
// 2/pi only the digits around the binary point matter. Finite |x| >= 2^19.
static Reduced<ScalarLane> reduce_large(double x) noexcept
{
    const std::uint64_t bits = magnitude_bits(x);
    const std::uint64_t mantissa = (bits & 0x000fffffffffffffu) | 0x0010000000000000u;
    const int exponent = static_cast<int>(bits >> 52) - 1075;

    // Three words of 2/pi from the digit that, times the mantissa's last place, weighs 2: above are whole turns.
    const unsigned first = static_cast<unsigned>(exponent - 2 + 64);
    const auto p2 = platform::wide_product(mantissa, window(first + 128));
    const auto p1 = platform::wide_product(mantissa, window(first + 64));
    std::uint64_t low = p2.low;
    std::uint64_t middle = p1.low + p2.high;
    std::uint64_t high = mantissa * window(first) + p1.high + (middle < p1.low ? 1u : 0u);

    // Two bits of quarter turns, 190 bits of fraction: taken to the nearest quarter turn.
    std::uint64_t quadrant = high >> 62;
    high &= 0x3fffffffffffffffu;
    const bool above_half = (high >> 61) != 0;
    if (above_half) {
        ++quadrant;
        low = ~low + 1;
        middle = ~middle + (low == 0 ? 1u : 0u);
        high = (~high + (low == 0 && middle == 0 ? 1u : 0u)) & 0x3fffffffffffffffu;
    }
    int scale = -62;
    if (high == 0) {
        high = middle;
        middle = low;
        low = 0;
        scale -= 64;
    }
    const int zeros = std::countl_zero(high);
    if (zeros > 0) {
        high = high << zeros | middle >> (64 - zeros);
        middle = middle << zeros | low >> (64 - zeros);
    }
    scale -= zeros;
    const double f1 = static_cast<double>(high >> 11) * 0x1p11;
    const double f2 = static_cast<double>((high & 0x7ffu) << 53 | middle >> 11) * 0x1p-53;

    // Times pi/2 in two numbers, the product of the leading parts kept exact by halves of 26 bits.
    constexpr double pi_half = 0x1.921fb54442d18p+0;
    constexpr double pi_half_tail = 0x1.1a62633145c07p-54;
    constexpr double pi_half_a = 0x1.921fb54p+0; // 27 bits
    constexpr double pi_half_rest = pi_half - pi_half_a;
    const double f1a = static_cast<double>(high >> 38) * 0x1p38;
    const double f1b = f1 - f1a;
    const double product = f1 * pi_half;
    const double lost = ((f1a * pi_half_a - product) + f1a * pi_half_rest + f1b * pi_half_a) + f1b * pi_half_rest;
    const double rest = lost + (f1 * pi_half_tail + f2 * pi_half);
    double unit = std::bit_cast<double>(static_cast<std::uint64_t>(1023 + scale) << 52);
    if (above_half != (std::bit_cast<std::uint64_t>(x) >> 63 != 0))
        unit = -unit;
    const double angle = product + rest;
    if (std::bit_cast<std::uint64_t>(x) >> 63)
        quadrant = 0u - quadrant;
    return {angle * unit, ((product - angle) + rest) * unit, quadrant};
}

static Reduced<ScalarLane> reduce_any(double x) noexcept
{
    return magnitude_bits(x) <= std::bit_cast<std::uint64_t>(s_reduction_limit) ? reduce_quarter_turns<ScalarLane>(x)
                                                                                : reduce_large(x);
}

static double sin_special_with(double x, unsigned turns) noexcept
{
    if (is_nan(x))
        return x + x;
    if (magnitude_bits(x) == 0x7ff0000000000000u)
        return undefined();
    return sin_of_reduced<ScalarLane>(reduce_large(x), turns);
}

double sin_special(double x) noexcept
{
    return sin_special_with(x, 0);
}

double cos_special(double x) noexcept
{
    return sin_special_with(x, 1);
}

static double without_low_half(double x) noexcept
{
    return std::bit_cast<double>(std::bit_cast<std::uint64_t>(x) & 0xffffffff00000000u);
}

// tan on [-pi/4, pi/4], or -1/tan where `reciprocal`: minimax coefficients of the freely distributable mathematical
// library (Ng, 1993).
static double tan_polynomial(double x, double tail, bool reciprocal) noexcept
{
    static constexpr double s_tan[] = {
        3.33333333333334091986e-01, 1.33333333333201242699e-01, 5.39682539762260521377e-02, 2.18694882948595424599e-02,
        8.86323982359930005737e-03, 3.59207910759131235356e-03, 1.45620945432529025516e-03, 5.88041240820264096874e-04,
        2.46463134818469906812e-04, 7.81794442939557092300e-05, 7.14072491382608190305e-05, -1.85586374855275456654e-05,
        2.59073051863633712884e-05,
    };
    const bool large = magnitude_bits(x) >= 0x3fe5942800000000u; // about 0.67434
    const bool negative = std::bit_cast<std::uint64_t>(x) >> 63 != 0;
    if (large) {
        const double sign = negative ? -1.0 : 1.0;
        x = (7.85398163397448278999e-01 - sign * x) + (3.06161699786838301793e-17 - sign * tail);
        tail = 0;
    }
    const double z = x * x;
    const double w = z * z;
    const double odd = s_tan[1] + w * (s_tan[3] + w * (s_tan[5] + w * (s_tan[7] + w * (s_tan[9] + w * s_tan[11]))));
    const double even =
        z * (s_tan[2] + w * (s_tan[4] + w * (s_tan[6] + w * (s_tan[8] + w * (s_tan[10] + w * s_tan[12])))));
    const double cube = z * x;
    const double r = tail + z * (cube * (odd + even) + tail) + s_tan[0] * cube;
    const double sum = x + r;
    if (large) {
        const double v = reciprocal ? -1.0 : 1.0;
        const double y = v - 2.0 * (x - (sum * sum / (sum + v) - r));
        return negative ? -y : y;
    }
    if (!reciprocal)
        return sum;
    // -1/(x + r), corrected by what rounding the sum and the quotient lost.
    const double head = without_low_half(sum);
    const double quotient = -1.0 / sum;
    const double t = without_low_half(quotient);
    return t + quotient * (1.0 + t * head + t * (r - (head - x)));
}

double tan(double x) noexcept
{
    if (is_nan(x))
        return x + x;
    const std::uint64_t magnitude = magnitude_bits(x);
    if (magnitude == 0x7ff0000000000000u)
        return undefined();
    if (magnitude < std::bit_cast<std::uint64_t>(0x1p-27))
        return x;
    const auto reduced = reduce_any(x);
    return tan_polynomial(reduced.angle, reduced.tail, (reduced.quadrant & 1) != 0);
}

// Argument reduction to four centres and minimax coefficients of the freely distributable mathematical library (Ng,
// 1993).
double atan(double x) noexcept
{
    static constexpr double s_centre_high[] = {4.63647609000806093515e-01, 7.85398163397448278999e-01,
                                               9.82793723247329054082e-01, 1.57079632679489655800e+00};
    static constexpr double s_centre_low[] = {2.26987774529616870924e-17, 3.06161699786838301793e-17,
                                              1.39033110312309984516e-17, 6.12323399573676603587e-17};
    static constexpr double s_atan[] = {
        3.33333333333329318027e-01,  -1.99999999998764832476e-01, 1.42857142725034663711e-01,
        -1.11111104054623557880e-01, 9.09088713343650656196e-02,  -7.69187620504482999495e-02,
        6.66107313738753120669e-02,  -5.83357013379057348645e-02, 4.97687799461593236017e-02,
        -3.65315727442169155270e-02, 1.62858201153657823623e-02,
    };
    if (is_nan(x))
        return x + x;
    double a = std::bit_cast<double>(magnitude_bits(x));
    if (a < 0x1p-27)
        return x;
    const bool negative = std::bit_cast<std::uint64_t>(x) >> 63 != 0;
    int centre = -1;
    if (a >= 0x1p66)
        a = 0, centre = 3;
    else if (a >= 2.4375)
        a = -1.0 / a, centre = 3;
    else if (a >= 1.1875)
        a = (a - 1.5) / (1.0 + 1.5 * a), centre = 2;
    else if (a >= 0.6875)
        a = (a - 1.0) / (a + 1.0), centre = 1;
    else if (a >= 0.4375)
        a = (2.0 * a - 1.0) / (2.0 + a), centre = 0;
    const double z = a * a;
    const double w = z * z;
    const double even =
        z * (s_atan[0] + w * (s_atan[2] + w * (s_atan[4] + w * (s_atan[6] + w * (s_atan[8] + w * s_atan[10])))));
    const double odd = w * (s_atan[1] + w * (s_atan[3] + w * (s_atan[5] + w * (s_atan[7] + w * s_atan[9]))));
    double y = a - a * (even + odd);
    if (centre >= 0)
        y = s_centre_high[centre] - ((a * (even + odd) - s_centre_low[centre]) - a);
    return negative ? -y : y;
}

double pow_general(double x, double y) noexcept
{
    return std::pow(x, y);
}

} // namespace qmml::elementary
