// Two logarithms for little more than the price of one.
#pragma once

#include "core/elementary.h"
#include "platform/simd/baseline.h"

namespace qmml {

struct LogPair {
    double first, second;
};

[[gnu::noinline, gnu::cold]] inline LogPair log_pair_special(double a, double b) noexcept
{
    return {elementary::log(a), elementary::log(b)};
}

// The bits of elementary::log in both, for positive, normal, finite arguments.
inline LogPair log_pair_normal_range(double a, double b) noexcept
{
    using L = platform::BaselineLane;
    const double arguments[2] = {a, b};
    double values[2];
    for (int i = 0; i < 2; i += L::width)
        L::store(values + i,
                 elementary::log_normal_range<L>(L::load(arguments + i), L::set(elementary::s_exponent_origin)));
    return {values[0], values[1]};
}

// The same for any arguments.
inline LogPair log_pair(double a, double b) noexcept
{
    const auto ordinary = [](double x) {
        return std::bit_cast<std::uint64_t>(x) - 0x0010000000000000u < 0x7fe0000000000000u;
    };
    if (ordinary(a) && ordinary(b)) [[likely]]
        return log_pair_normal_range(a, b);
    return log_pair_special(a, b);
}

} // namespace qmml
