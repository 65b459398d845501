#include "core/elementary.h"
#include "core/missing.h"
#include "platform/float_guard.h"
#include "platform/opaque.h"
#include "random/generator.h"

#include <qmml/random.h>

#include <algorithm>
#include <bit>
#include <cmath>

namespace qmml {
namespace {

double poisson_part(double threshold) noexcept
{
    Generator generator; // a local one lives in registers
    double count = 0;
    for (double product = generator.uniform(); product >= threshold; product *= generator.uniform())
        ++count;
    return count;
}

// By multiplication of uniforms; a mean too large for that is the sum of smaller ones.
double poisson(double mean) noexcept
{
    constexpr double largest_part = 500;
    const double threshold = elementary::exp(-mean);
    if (threshold > 0)
        return poisson_part(threshold);
    double count = 0;
    while (mean > 0) {
        const double part = std::min(mean, largest_part);
        count += poisson_part(elementary::exp(-part));
        mean -= part;
    }
    return count;
}

// The polar method. Of the pair only one deviate is used; which, the parity of all bits of the two coordinates decides.
double standard_normal() noexcept
{
    Generator generator;
    double a, b, s;
    do {
        a = 2 * generator.uniform() - 1;
        b = 2 * generator.uniform() - 1;
        s = a * a + b * b;
    } while (s >= 1);
    const double factor = std::sqrt(-2 * elementary::log(s) / s);
    return factor * (std::popcount(bits_of(a) ^ bits_of(b)) % 2 ? b : a);
}

constexpr bool is_positive(double value) noexcept
{
    return static_cast<std::int64_t>(bits_of(value)) > 0 && !is_nan(value);
}

// Ordinary factors raise no fault. Signalling NaNs and factors near overflow may, and the caller may trap it.
inline double scale(double deviate, double factor) noexcept
{
    if ((bits_of(factor) & 0x7FF0000000000000u) < 0x7E00000000000000u) [[likely]]
        return deviate * factor;
    platform::FloatGuard guard;
    return platform::opaque(deviate * platform::opaque(factor));
}

} // namespace
} // namespace qmml

double rnd_(int s)
{
    if (s < 0)
        qmml::s_current_record->seed = s;
    return qmml::Generator().uniform();
}

int inirnd_(double x)
{
    const int k = qmml::is_finite(x) ? static_cast<int>(std::fmod(std::fabs(x), 32000.0)) : 0;
    rnd_(-1 - k);
    return 0;
}

double uniform_(double a)
{
    return qmml::scale(rnd_(0), a);
}

double znormal_(double sd)
{
    return qmml::scale(qmml::standard_normal(), sd);
}

double poisson_(double mean)
{
    if (!qmml::is_positive(mean)) {
        rnd_(0); // the definition's one factor, found too small
        return 0;
    }
    if (!qmml::is_finite(mean))
        return mean;
    if (mean < 700)
        return qmml::poisson(mean);
    qmml::platform::FloatGuard guard; // from here on the factors underflow
    return qmml::platform::opaque(qmml::poisson(qmml::platform::opaque(mean)));
}

int rand_(void)
{
    return std::min(static_cast<int>(rnd_(0) * 32768.0), 32767);
}
