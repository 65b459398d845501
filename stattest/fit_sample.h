// What the fits have in common: the sample, its support, deviations without round-off, one root finder.
#pragma once

#include "core/block.h"
#include "core/elementary.h"
#include "stattest/error.h"
#include "stattest/fit.h"

#include <algorithm>
#include <cmath>
#include <cstdint>

namespace qmml::stattest {

struct Sample {
    Block<double> values;
    double least = 0, greatest = 0;

    auto size() const noexcept { return static_cast<double>(values.size()); }
};

// Checks and copies the values that count. at_least is the least number of them; low and high bound the support, low
// itself being part of it or not.
struct Support {
    double low, high;
    bool low_included = false;
};
int read_sample(const Observations& observations, int at_least, const Support& support, Sample& sample) noexcept;

inline int in_range(double a, double b = 0) noexcept
{
    return std::isfinite(a) && std::isfinite(b) ? s_success : fit::s_not_converged;
}

// Deviations from the least value, exact among neighbours and in units that bring them to at most 2: neither their
// squares nor their sums leave the range.
class Deviations {
public:
    explicit Deviations(const Sample& sample) noexcept
        : m_shrink(std::isfinite(sample.greatest - sample.least) ? 1 : 0.25), m_least(sample.least * m_shrink),
          m_exponent(std::ilogb(sample.greatest * m_shrink - m_least))
    {
    }
    double operator()(double value) const noexcept { return std::scalbn(value * m_shrink - m_least, -m_exponent); }
    double length(double deviation) const noexcept { return std::scalbn(deviation, m_exponent) / m_shrink; }
    double value(double deviation) const noexcept { return (m_least + std::scalbn(deviation, m_exponent)) / m_shrink; }

private:
    double m_shrink, m_least;
    int m_exponent;
};

// ln(1 + u) for u > -1.
inline double log_one_plus(double u) noexcept
{
    const double w = 1 + u; // what rounding does to it is undone by the quotient
    return w == 1 ? u : elementary::log(w) * (u / (w - 1));
}

// ln(a / b) for a >= b > 0.
inline double log_ratio(double a, double b) noexcept
{
    const double u = (a - b) / b;
    return u < 1 ? log_one_plus(u) : elementary::log(a) - elementary::log(b);
}

// Where a function that falls once through 0 does so: by secants, started with the given slope, inside a bracket that
// is halved when they do not close it. Good to the resolution, or to the last digits where they are coarser.
template <class Function>
bool find_root(Function function, double& x, double slope, double resolution) noexcept
{
    constexpr int s_most_steps = 400;
    constexpr double s_longest_step = 4;
    bool bounded[2] = {false, false};
    double bound[2] = {0, 0}; // above 0 left, below 0 right
    double value = function(x), width = 0;
    for (int step = 0, slow = 0; step < s_most_steps && std::isfinite(value); ++step) {
        if (value == 0)
            return true;
        const int side = value < 0;
        bound[side] = x;
        bounded[side] = true;
        double next = x + std::clamp(-value / slope, -s_longest_step, s_longest_step);
        if (bounded[0] && bounded[1]) {
            const double now = bound[1] - bound[0];
            slow = step > 0 && now > 0.5 * width ? slow + 1 : 0;
            width = now;
            if (slow > 3 || !(next > bound[0] && next < bound[1])) {
                next = bound[0] + 0.5 * now;
                slow = 0;
            }
        }
        const double moved = next - x;
        const bool close = std::abs(moved) <= resolution + 4e-16 * std::abs(x);
        x = next;
        if (close)
            return true;
        const double before = value;
        value = function(x);
        const double secant = (value - before) / moved;
        if (secant < 0 && std::isfinite(secant))
            slope = secant;
    }
    return false;
}

} // namespace qmml::stattest
