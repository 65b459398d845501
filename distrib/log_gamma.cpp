#include "distrib/log_gamma.h"

#include <qmml/distrib.h>

#include "core/elementary.h"
#include "distrib/guard.h"

#include <array>

namespace qmml {

// Lanczos series, g = 7, nine terms: C. Lanczos, A precision approximation of the gamma function, SIAM J. Numer. Anal.
// Ser. B 1 (1964), 86-96. The leading term ends in ...51827 where the usual table has ...80993: callers depend on it.
static constexpr double s_lanczos_leading = 0.99999999999951827;
// From the last term down: the order of the summation.
static constexpr double s_lanczos[] = {
    1.6594701874084621e-7, 9.9349371139307475e-6, -0.1385710331296526, 12.50734324009056,
    -176.61502914983859,   771.32342877576741,    -1259.1392167222889, 676.52036812188351,
};
static constexpr double s_ln_sqrt_2pi = 0.9189385332046727;

// Requires x > 0.
template <double (*Log)(double) noexcept>
static inline double lanczos(double x) noexcept
{
    // Counted down from x + 7, so that an x below 1e-16 is lost in the last denominator and the result is infinite.
    const double top = x + 7;
    std::array<double, std::size(s_lanczos)> terms;
    for (std::size_t k = 0; k < terms.size(); ++k)
        terms[k] = s_lanczos[k] / (top - static_cast<double>(k));
    double sum = 0;
    for (const double term : terms)
        sum += term;
    const double t = x + 6.5;
    return (x - 0.5) * Log(t) - t + s_ln_sqrt_2pi + Log(s_lanczos_leading + sum); // the first does not wait for the sum
}

double ln_gamma(double x) noexcept
{
    if (x <= 0) // written so that a NaN passes through
        return distr_error_value;
    return calm_ln_gamma(x) ? lanczos<elementary::log_ordinary>(x) : lanczos<elementary::log>(x);
}

static constexpr int s_tabulated = 1024;

static const double* whole_number_table() noexcept
{
    static const auto s_table = [] {
        const platform::FloatGuard inexact_may_be_unmasked;
        std::array<double, s_tabulated + 1> table{};
        for (std::size_t n = 1; n < table.size(); ++n)
            table[n] = ln_gamma(static_cast<double>(n));
        return table;
    }();
    return s_table.data();
}

double ln_gamma_tabulated(double x) noexcept
{
    if (between(x, 1.0, s_tabulated + 1.0)) {
        const int n = static_cast<int>(x);
        if (x == n)
            return whole_number_table()[n];
    }
    return ln_gamma(x);
}

static double gammln_anywhere(double x) noexcept
{
    return x <= 0 ? distr_fail() : distr_ok(ln_gamma(x));
}

} // namespace qmml

double gammln(double x)
{
    if (qmml::calm_ln_gamma(x)) [[likely]]
        return qmml::distr_ok(qmml::lanczos<qmml::elementary::log_ordinary>(x));
    return qmml::shielded_kernel<qmml::gammln_anywhere>(x);
}
