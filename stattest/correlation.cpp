#include "stattest/correlation.h"

#include <qmml/distrib.h>

#include "matrix/factors.h"
#include "matrix/rounded_difference.h"
#include "stattest/missing_rule.h"

#include <array>
#include <cmath>
#include <cstddef>

namespace qmml::stattest {
namespace {

constexpr int s_first_uncentred = 5000; // from here on the values enter as they are

template <std::size_t V>
using Values = std::array<double, V>;

template <std::size_t V>
struct Cases {
    std::array<const double*, V> columns;
    int n;
    MissingRule missing;
};

// The cases in which no variable is missing, a block at a time.
template <std::size_t V>
class CompleteCases {
public:
    explicit CompleteCases(const Cases<V>& cases) noexcept : m_cases(cases) {}

    // How many have been read: 0 at the end.
    int read() noexcept
    {
        int count = 0;
        for (; m_next < m_cases.n && count < s_block; ++m_next) {
            bool complete = true;
            for (std::size_t v = 0; v < V; ++v) {
                m_values[v][static_cast<std::size_t>(count)] = m_cases.columns[v][m_next];
                complete = complete && !m_cases.missing(m_cases.columns[v][m_next]);
            }
            count += complete;
        }
        return count;
    }
    double* column(std::size_t v) noexcept { return m_values[v].data(); }
    Values<V> at(int i) const noexcept
    {
        Values<V> values;
        for (std::size_t v = 0; v < V; ++v)
            values[v] = m_values[v][static_cast<std::size_t>(i)];
        return values;
    }

private:
    static constexpr int s_block = 256;
    const Cases<V>& m_cases;
    int m_next = 0;
    std::array<std::array<double, s_block>, V> m_values;
};

// Running means about which the second pass takes its differences.
template <std::size_t V>
double provisional_means(const Cases<V>& all, Values<V>& means) noexcept
{
    CompleteCases<V> cases(all);
    double count = 0;
    while (const int read = cases.read())
        for (int i = 0; i < read; ++i) {
            const Values<V> values = cases.at(i);
            ++count;
            for (std::size_t v = 0; v < V; ++v)
                means[v] += (values[v] - means[v]) / count;
        }
    return count;
}

// Running means and the lower triangle of the sums of squares and products, row by row.
template <std::size_t V>
struct Comoments {
    double count = 0;
    Values<V> mean{};
    std::array<double, V*(V + 1) / 2> sums{};

    void add(const Values<V>& values) noexcept
    {
        ++count;
        Values<V> before, after;
        for (std::size_t v = 0; v < V; ++v) {
            before[v] = values[v] - mean[v];
            mean[v] += before[v] / count;
            after[v] = values[v] - mean[v];
        }
        std::size_t at = 0;
        for (std::size_t v = 0; v < V; ++v)
            for (std::size_t w = 0; w <= v; ++w)
                sums[at++] += after[w] * before[v];
    }
    double squares(std::size_t v) const noexcept { return sums[v * (v + 3) / 2]; }
};

template <std::size_t V>
Comoments<V> comoments(const Cases<V>& all, const Values<V>& provisional) noexcept
{
    CompleteCases<V> cases(all);
    Comoments<V> result;
    while (const int read = cases.read()) {
        for (std::size_t v = 0; v < V; ++v)
            matrix::rounded_differences(cases.column(v), read, provisional[v], cases.column(v));
        for (int i = 0; i < read; ++i)
            result.add(cases.at(i));
    }
    return result;
}

double not_negative(double p) noexcept
{
    return p < 0 ? 1 : p;
}

} // namespace

bool simple_correlation(const double* x, const double* y, int n, double missing, SimpleCorrelation& result,
                        int& error) noexcept
{
    const Cases<2> cases{{x, y}, n, MissingRule(missing)};
    Values<2> provisional{};
    if (n < s_first_uncentred)
        provisional_means(cases, provisional);
    const auto moments = comoments(cases, provisional);

    error = correlation::s_too_few;
    if (is_less(moments.count, 2.0))
        return false;
    error = correlation::s_no_variance;
    const double squares_x = moments.squares(0), products = moments.sums[1], squares_y = moments.squares(1);
    if (is_less_equal(squares_x, 0.0) || is_less_equal(squares_y, 0.0))
        return false;

    result.count = moments.count;
    result.mean_x = provisional[0] + moments.mean[0];
    result.mean_y = provisional[1] + moments.mean[1];
    result.slope_yx = products / squares_x;
    result.intercept_yx = result.mean_y - result.slope_yx * result.mean_x;
    result.slope_xy = products / squares_y;
    result.intercept_xy = result.mean_x - result.slope_xy * result.mean_y;
    result.r = products / std::sqrt(squares_x * squares_y);
    result.sd_x = std::sqrt(squares_x / (moments.count - 1));
    result.sd_y = std::sqrt(squares_y / (moments.count - 1));
    result.df = moments.count - 2;
    result.t = 0;
    result.p = 1;
    const double explained = result.r * result.r, rest = 1 - explained;
    if (is_greater_equal(result.df, 1.0) && rest > 0) {
        result.t = std::sqrt(explained / (rest / result.df));
        result.p = not_negative(2 * i_student(-result.t, result.df));
    }
    return true;
}

bool multiple_correlation(const double* x1, const double* x2, const double* y, int n, double missing,
                          bool through_origin, MultipleCorrelation& result, int& error) noexcept
{
    const Cases<3> cases{{x1, x2, y}, n, MissingRule(missing)};
    Values<3> provisional{};
    error = correlation::s_too_few;
    if (!through_origin && n < s_first_uncentred && provisional_means(cases, provisional) < 3)
        return false;
    const auto moments = comoments(cases, provisional);
    const double count = moments.count;
    if (count < 3)
        return false;
    error = correlation::s_no_variance;
    for (std::size_t v = 0; v < 3; ++v)
        if (is_less_equal(moments.squares(v), 0.0))
            return false;

    error = correlation::s_collinear;
    std::array<double, 9> swept{};
    for (std::size_t i = 0, at = 0; i < 3; ++i)
        for (std::size_t j = 0; j <= i; ++j, ++at)
            swept[i + 3 * j] = moments.sums[at] + (through_origin ? count * moments.mean[i] * moments.mean[j] : 0.0);
    const double total = swept[8];
    if (matrix::sweep(swept.data(), 3, 0, 1, 1) != matrix::Status::success)
        return false;

    result.count = count;
    result.mean_x1 = provisional[0] + moments.mean[0];
    result.mean_x2 = provisional[1] + moments.mean[1];
    result.mean_y = provisional[2] + moments.mean[2];
    result.b1 = swept[2];
    result.b2 = swept[5];
    result.b0 = through_origin ? 0 : result.mean_y - result.b1 * result.mean_x1 - result.b2 * result.mean_x2;
    const double determination = 1 - swept[8] / total;
    result.r = determination > 0 ? std::sqrt(determination) : 0;
    result.sd_x1 = std::sqrt(moments.squares(0) / (count - 1));
    result.sd_y = std::sqrt(moments.squares(2) / (count - 1));
    result.df = count - (through_origin ? 2 : 3);
    result.f = 0;
    result.p = 1;
    if (result.df >= 1) {
        result.f = determination * 0.5 / ((1 - determination) / result.df);
        result.p = not_negative(xftest(2, result.df, result.f));
    }
    return true;
}

} // namespace qmml::stattest
