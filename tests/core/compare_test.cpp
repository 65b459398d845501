#include <qmml/missing.h>

#include <gtest/gtest.h>

#include <array>
#include <bit>
#include <cfenv>
#include <cmath>
#include <cstdint>
#include <limits>
#include <vector>

namespace {

// The definition, on the floating-point unit: clear the low bits, compare, look the outcome up.
template <class Real, class Bits>
void expect_definition(const std::array<int (*)(Real, Real), 5>& operations, Bits cleared, bool nans_first)
{
    using Limits = std::numeric_limits<Real>;
    std::vector<Real> values;
    for (Real v : {Real(0), Limits::denorm_min() * 16, Limits::min(), Real(1), Real(2), Limits::max(),
                   Limits::infinity(), Limits::quiet_NaN()})
        for (unsigned near : {0u, 1u, 3u, 4u, 15u, 16u})
            for (Bits sign : {Bits{0}, Bits(Bits{1} << (8 * sizeof(Bits) - 1))})
                values.push_back(std::bit_cast<Real>(Bits((std::bit_cast<Bits>(v) + near) | sign)));
    for (Real a : values)
        for (Real b : values) {
            const auto x = std::bit_cast<Real>(Bits(std::bit_cast<Bits>(a) & ~cleared));
            const auto y = std::bit_cast<Real>(Bits(std::bit_cast<Bits>(b) & ~cleared));
            const bool unordered = std::isunordered(x, y), less = std::isless(x, y), greater = std::isgreater(x, y);
            const bool equal = !unordered && !less && !greater, any_nan = std::isnan(a) || std::isnan(b);
            const bool expected[] = {nans_first && any_nan ? std::isnan(a) && std::isnan(b)
                                                           : equal || (unordered && !nans_first),
                                     less || unordered, less || equal || unordered, greater, greater || equal};
            std::feclearexcept(FE_ALL_EXCEPT);
            for (std::size_t i = 0; i < 5; ++i)
                ASSERT_EQ(operations[i](a, b), int(expected[i])) << i << ": " << a << ' ' << b;
            ASSERT_EQ(std::fetestexcept(FE_INVALID), 0);
        }
}

TEST(TolerantComparisons, AgreeWithTheirDefinition)
{
    expect_definition<double>({DoubleIsEqual, DoubleIsLess, DoubleIsLessEqual, DoubleIsGreater, DoubleIsGreaterEqual},
                              std::uint64_t{0xF}, true);
    expect_definition<float>({FloatIsEqual, FloatIsLess, FloatIsLessEqual, FloatIsGreater, FloatIsGreaterEqual},
                             std::uint32_t{0x3}, false);
}

} // namespace
