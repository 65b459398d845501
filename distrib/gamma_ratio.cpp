#include "core/elementary.h"
#include "distrib/incomplete_gamma.h"
#include "distrib/log_gamma.h"
#include "distrib/normal.h"
#include "platform/thread_local.h"

#include <cmath>
#include <limits>

// B. L. Shea, Algorithm AS 239, Chi-squared and incomplete gamma integral, Applied Statistics 37 (1988), 466-473.
namespace qmml {

static constexpr double s_tolerance = 1e-14;
static constexpr double s_overflow = 1e37;
static constexpr double s_large_x = 1e8;
static constexpr double s_large_shape = 1000;
static constexpr double s_exponent_floor = -88;
// Convergence takes a few thousand steps at most; the cap is there for a NaN.
static constexpr int s_cap = 20000;

// Pearson's series for x <= shape or x <= 1, so that its terms decrease; negative when it does not end. The products
// and sums within a block are formed relative to the term before it: only two operations per block wait for each other.
static double series(double x, double shape) noexcept
{
    constexpr int block = 8;
    double term = 1, sum = 1;
    for (int n = 0; n < s_cap; n += block) {
        double quotient[block];
        for (int i = 0; i < block; ++i)
            quotient[i] = x / (shape + (n + 1 + i));
        double product[block], partial[block];
        product[0] = partial[0] = quotient[0];
        for (int i = 1; i < block; ++i) {
            product[i] = product[i - 1] * quotient[i];
            partial[i] = partial[i - 1] + product[i];
        }
        if (term * product[block - 1] <= s_tolerance) {
            int last = 0;
            while (last < block - 1 && !(term * product[last] <= s_tolerance))
                ++last;
            return sum + term * partial[last];
        }
        sum += term * partial[block - 1];
        term *= product[block - 1];
    }
    return -1;
}

// The continued fraction of the upper tail; negative when it does not end. Two steps at a time, each from the values
// before the first: the chain from step to step is half as long.
static double fraction(double x, double shape) noexcept
{
    double a = 1 - shape, b = a + x + 1;
    double n1 = 1, n2 = x, n3 = x + 1, n4 = x * b;
    double value = n3 / n4;
    const auto ends = [&value](double above, double below) {
        if (below == 0)
            return false;
        const double next = above / below, change = std::fabs(value - next);
        if (change <= s_tolerance && change <= s_tolerance * next)
            return true; // with the value before the one that met the test, as published
        value = next;
        return false;
    };
    for (int n = 1; n < s_cap; n += 2) {
        const double b1 = b + 2, b2 = b + 4;
        const double an1 = (a + 1) * n, an2 = (a + 2) * (n + 1);
        const double n5 = b1 * n3 - an1 * n1, n6 = b1 * n4 - an1 * n2;
        if (ends(n5, n6))
            return value;
        const double both = b2 * b1 - an2, skipped = b2 * an1;
        const double n7 = both * n3 - skipped * n1, n8 = both * n4 - skipped * n2;
        if (ends(n7, n8))
            return value;
        n1 = n5;
        n2 = n6;
        n3 = n7;
        n4 = n8;
        a += 2;
        b = b2;
        if (std::fabs(n7) >= s_overflow) [[unlikely]] {
            n1 /= s_overflow;
            n2 /= s_overflow;
            n3 /= s_overflow;
            n4 /= s_overflow;
        }
    }
    return -1;
}

static GammaRatio no_number() noexcept
{
    return {std::numeric_limits<double>::quiet_NaN(), true};
}

static GammaRatio wilson_hilferty(double x, double shape) noexcept
{
    const double z = 3 * std::sqrt(shape) * (elementary::pow(x / shape, 1.0 / 3) + 1 / (9 * shape) - 1);
    return z == z ? GammaRatio{normal_lower(z), false} : no_number();
}

// Whether exp(exponent) * factor is worth its value; the logarithm is taken only near the floor.
static inline bool above_floor(double exponent, double factor) noexcept
{
    if (exponent > s_exponent_floor + 40 && factor > 1e-17) [[likely]]
        return true;
    return exponent + elementary::log(factor) >= s_exponent_floor;
}

// The general shape of the computation, with the log-gammas on demand: each branch needs one of them. The weight comes
// before the loop, which does not wait for it; behind the loop it would wait for the loop's end.
template <class LnGammaShape, class LnGammaNext>
static inline GammaRatio ratio(double x, double shape, LnGammaShape ln_gamma_shape, LnGammaNext ln_gamma_next) noexcept
{
    if (shape <= 0 || x < 0)
        return {0, true};
    if (x == 0)
        return {0, false};
    if (shape > s_large_shape)
        return wilson_hilferty(x, shape);
    if (x > s_large_x)
        return {1, false};
    if (x <= 1 || x < shape) {
        const double exponent = shape * elementary::log(x) - x - ln_gamma_next(), weight = elementary::exp(exponent);
        const double sum = series(x, shape);
        if (sum < 0)
            return no_number();
        return {above_floor(exponent, sum) ? weight * sum : 0, false};
    }
    const double exponent = shape * elementary::log(x) - x - ln_gamma_shape(), weight = elementary::exp(exponent);
    const double upper = fraction(x, shape);
    if (upper < 0)
        return no_number();
    return {above_floor(exponent, upper) ? 1 - weight * upper : 1, false};
}

GammaRatio gamma_ratio(double x, double shape, double ln_gamma_shape, double ln_gamma_next) noexcept
{
    return ratio(
        x, shape, [=] { return ln_gamma_shape; }, [=] { return ln_gamma_next; });
}

GammaRatio gamma_ratio(double x, double shape) noexcept
{
    static constinit QMML_THREAD_LOCAL LnGammaMemo s_shape, s_next;
    return ratio(
        x, shape, [=] { return s_shape(shape); }, [=] { return s_next(shape + 1); });
}

} // namespace qmml
