// The exports with their results in records. A result that was not written is s_unwritten.
#pragma once

#include <qmml/missing.h>
#include <qmml/stattest.h>

#include "core/missing.h"

#include <array>
#include <bit>
#include <cstdint>
#include <random>
#include <vector>

namespace qmml::test {

using Doubles = std::vector<double>;

inline constexpr double s_unwritten = -777;
inline constexpr int s_no_code = -777;

struct Outputs {
    int result = -1, code = s_no_code;
    std::array<double, 14> values;

    Outputs() { values.fill(s_unwritten); }
    double* operator[](int i) { return &values[static_cast<std::size_t>(i)]; }
    bool untouched() const { return values == Outputs().values; }
    // The same bits everywhere.
    bool operator==(const Outputs& other) const
    {
        using Bits = std::array<std::uint64_t, 14>;
        return result == other.result && code == other.code &&
               std::bit_cast<Bits>(values) == std::bit_cast<Bits>(other.values);
    }
};

inline Outputs anova(const Doubles& data, const std::vector<int>& sizes, int flags = 0)
{
    Outputs o;
    o.result = OneWayAnova__(flags, 0, data.data(), static_cast<int>(sizes.size()), sizes.data(), o[0], o[1], o[2],
                             o[3], o[4], o[5], o[6], o[7], &o.code);
    return o;
}

inline Outputs chi_square(int rows, int columns, const Doubles& table)
{
    Outputs o;
    int df = 0;
    o.result = ComputeChiSquareForNbyMTable__(0, columns, rows, table.data(), o[0], &df, o[2], &o.code);
    if (o.result == 0)
        *o[1] = df;
    return o;
}

inline Outputs kolmogorov_smirnov(int family, std::array<double, 3> p, const Doubles& data, double missing = s_missing)
{
    Outputs o;
    o.result = ComputeKolmogorovSmirnovTest__(0, family, p[0], p[1], p[2], static_cast<int>(data.size()), data.data(),
                                              missing, o[0], o[1], o[2], &o.code);
    return o;
}

inline Outputs correlation(const Doubles& x, const Doubles& y, double missing = s_missing)
{
    Outputs o;
    o.result = ComputeSimpleCorrelation__(0, static_cast<int>(x.size()), x.data(), y.data(), missing, o[0], o[1], o[2],
                                          o[3], o[4], o[5], o[6], o[7], o[8], o[9], o[10], o[11], o[12], &o.code);
    return o;
}

inline Outputs correlation(const Doubles& x1, const Doubles& x2, const Doubles& y, int flags,
                           double missing = s_missing)
{
    Outputs o;
    o.result = ComputeMultipleCorrelation__(flags, static_cast<int>(y.size()), x1.data(), x2.data(), y.data(), missing,
                                            o[0], o[1], o[2], o[3], o[4], o[5], o[6], o[7], o[8], o[9], o[10], o[11],
                                            o[12], o[13], &o.code);
    return o;
}

inline Outputs shapiro_wilk(const Doubles& data, int used, int ready = 0)
{
    Outputs o;
    o.result = WilksWTest__(0, ready, data.data(), static_cast<int>(data.size()), used, o[0], o[1], &o.code);
    return o;
}

// The arrays are changed.
inline Outputs kruskal_wallis(std::vector<int>& group, Doubles& values, int groups)
{
    Outputs o;
    Doubles counts(static_cast<std::size_t>(groups)), sums(counts);
    o.result = KruskalAnovaTest__(0, static_cast<int>(values.size()), groups, group.data(), values.data(),
                                  counts.data(), sums.data(), o[0], o[1], &o.code, o[2]);
    for (int g = 0; g < groups && g < 5; ++g) {
        *o[3 + 2 * g] = counts[static_cast<std::size_t>(g)];
        *o[4 + 2 * g] = sums[static_cast<std::size_t>(g)];
    }
    return o;
}

struct Smoothed {
    int result = -1, code = s_no_code;
    Doubles ys, rw, res;
    bool operator==(const Smoothed&) const = default;
};

inline Smoothed lowess(const Doubles& x, const Doubles& y, double f, int steps, double delta)
{
    Smoothed s;
    s.ys = s.rw = s.res = Doubles(x.size(), s_unwritten);
    s.result = clowess(x.data(), y.data(), static_cast<int>(x.size()), f, steps, delta, s.ys.data(), s.rw.data(),
                       s.res.data(), &s.code);
    return s;
}

inline Doubles normal_sample(int n, unsigned seed, double mu = 0, double sigma = 1)
{
    std::mt19937_64 engine(seed);
    std::normal_distribution<double> draw(mu, sigma);
    Doubles sample(static_cast<std::size_t>(n));
    for (double& v : sample)
        v = draw(engine);
    return sample;
}

} // namespace qmml::test
