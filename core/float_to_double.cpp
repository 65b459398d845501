#include "core/missing.h"
#include "platform/float_guard.h"
#include "platform/opaque.h"

#include <qmml/missing.h>

#include <algorithm>
#include <cmath>

namespace qmml {
namespace {

// Powers of ten as the nearest doubles; exact up to 1e22. A float that is neither zero nor subnormal lies below 1e39,
// and has at most 37 zeros behind the decimal point.
constexpr double s_power[] = {
    1e0,  1e1,  1e2,  1e3,  1e4,  1e5,  1e6,  1e7,  1e8,  1e9,  1e10, 1e11, 1e12, 1e13, 1e14,
    1e15, 1e16, 1e17, 1e18, 1e19, 1e20, 1e21, 1e22, 1e23, 1e24, 1e25, 1e26, 1e27, 1e28, 1e29,
    1e30, 1e31, 1e32, 1e33, 1e34, 1e35, 1e36, 1e37, 1e38, 1e39, 1e40, 1e41, 1e42, 1e43, 1e44,
};

// 10^-37 to 10^38: the bounds between which a float's number of decimals changes.
constexpr double s_decade[] = {
    1e-37, 1e-36, 1e-35, 1e-34, 1e-33, 1e-32, 1e-31, 1e-30, 1e-29, 1e-28, 1e-27, 1e-26, 1e-25, 1e-24, 1e-23, 1e-22,
    1e-21, 1e-20, 1e-19, 1e-18, 1e-17, 1e-16, 1e-15, 1e-14, 1e-13, 1e-12, 1e-11, 1e-10, 1e-9,  1e-8,  1e-7,  1e-6,
    1e-5,  1e-4,  1e-3,  1e-2,  1e-1,  1e0,   1e1,   1e2,   1e3,   1e4,   1e5,   1e6,   1e7,   1e8,   1e9,   1e10,
    1e11,  1e12,  1e13,  1e14,  1e15,  1e16,  1e17,  1e18,  1e19,  1e20,  1e21,  1e22,  1e23,  1e24,  1e25,  1e26,
    1e27,  1e28,  1e29,  1e30,  1e31,  1e32,  1e33,  1e34,  1e35,  1e36,  1e37,  1e38,
};
constexpr int s_lowest_decade = -37;

// The ceiling of log10(a), by comparison: a logarithm could miss the powers of ten.
int ceil_log10(double a) noexcept
{
    return static_cast<int>(std::ranges::lower_bound(s_decade, a) - s_decade) + s_lowest_decade;
}

double round_to_7_digits(double a) noexcept
{
    if (a >= 1.0e7) {
        const double unit = s_power[ceil_log10(a) - 7];
        return std::floor(a / unit + 0.5) * unit;
    }
    if (a >= 1.0e6)
        return std::floor(a + 0.5);
    const double scale = s_power[7 - ceil_log10(a)];
    return std::floor(a * scale + 0.5) / scale;
}

} // namespace
} // namespace qmml

double FloatToDoubleExact(float f)
{
    const std::uint32_t magnitude = qmml::bits_of(f) & 0x7FFFFFFFu;
    const std::uint64_t sign = std::uint64_t{qmml::bits_of(f) >> 31} << 63;
    if (magnitude < 0x00800000u)
        return 0.0;
    if (magnitude >= 0x7F800000u) {
        // Widened by hand: a conversion would raise a fault on a signalling NaN.
        const std::uint64_t quiet = magnitude > 0x7F800000u ? qmml::s_missing_bits : 0x7FF0000000000000u;
        return std::bit_cast<double>(sign | quiet | std::uint64_t{magnitude & 0x007FFFFFu} << 29);
    }
    qmml::platform::FloatGuard guard; // the rounding is inexact, and the caller may trap even that
    const double value = qmml::platform::opaque(std::fabs(double{f}));
    const double rounded = qmml::platform::opaque(qmml::round_to_7_digits(value));
    return std::copysign(rounded, std::bit_cast<double>(sign));
}
