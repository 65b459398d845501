#include "matrix/factors.h"

#include "core/break_check.h"
#include "core/compare.h"
#include "core/memory.h"
#include "core/missing.h"
#include "platform/levels.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <random>
#include <utility>
#include <vector>

namespace {

using namespace qmml;
using namespace qmml::matrix;

// A column-major square.
struct Square {
    explicit Square(int order) : n(order), values(static_cast<std::size_t>(order) * static_cast<std::size_t>(order)) {}
    Square(int order, std::vector<double> given) : n(order), values(std::move(given)) {}

    double& operator()(int i, int j)
    {
        return values[static_cast<std::size_t>(j) * static_cast<std::size_t>(n) + static_cast<std::size_t>(i)];
    }
    double& lower(int i, int j) { return i >= j ? (*this)(i, j) : (*this)(j, i); }
    double* data() { return values.data(); }

    int n;
    std::vector<double> values;
};

// A'A of more rows than columns; whole numbers, so that its elements are exact.
Square positive_definite(int n, std::uint32_t seed, int rows)
{
    std::mt19937 engine(seed);
    std::vector<std::vector<double>> a(static_cast<std::size_t>(rows));
    for (auto& row : a)
        for (int j = 0; j < n; ++j)
            row.push_back(static_cast<double>(engine() % 19) - 9);
    Square product(n);
    for (int i = 0; i < n; ++i)
        for (int j = 0; j < n; ++j)
            for (const auto& row : a)
                product(i, j) += row[static_cast<std::size_t>(i)] * row[static_cast<std::size_t>(j)];
    return product;
}

void expect_same_bits(Square& actual, Square& expected)
{
    int different = 0;
    for (std::size_t i = 0; i < actual.values.size(); ++i)
        different += bits_of(actual.values[i]) != bits_of(expected.values[i]) &&
                     !(is_nan(actual.values[i]) && is_nan(expected.values[i]));
    EXPECT_EQ(different, 0) << "of " << actual.values.size() << " elements, order " << actual.n;
}

template <class Body>
void at_every_level(Body body)
{
    for (const auto level : platform::supported_levels()) {
        SCOPED_TRACE(static_cast<int>(level));
        const platform::ForcedLevel forced(level);
        body();
    }
}

Status plain_cholesky(Square& a)
{
    Square u = a;
    for (int j = 0; j < a.n; ++j) {
        const double eta = a(j, j) * 1e-28;
        for (int i = 0; i <= j; ++i) {
            double w = a(i, j);
            for (int k = 0; k < i; ++k)
                w -= u(k, i) * u(k, j);
            if (i < j && is_equal(u(i, i), 0.0)) {
                if (is_greater(w * w, std::fabs(eta * u(i, i))))
                    return Status::singular;
                u(i, j) = 0;
            } else if (i < j) {
                u(i, j) = w / u(i, i);
            } else if (is_less_equal(std::fabs(w), std::fabs(a(j, j) * 1e-14))) {
                u(j, j) = 0;
            } else if (is_less(w, 0.0)) {
                return Status::singular;
            } else {
                u(j, j) = std::sqrt(w);
            }
        }
        for (int i = j + 1; i < a.n; ++i)
            u(i, j) = 0;
    }
    a = u;
    return Status::success;
}

bool plain_pivot(Square& a, int k, int direction)
{
    const double p = a(k, k), d = -1 / p;
    if (direction > 0 ? !(std::fabs(p) >= 1e-25) : std::fabs(p) < 1e-25)
        return false;
    if (direction < 0)
        for (int i = 0; i < a.n; ++i)
            a.lower(i, k) = i == k ? d : a.lower(i, k) * d;
    if (direction < 0 && a.n > 1 && std::fabs(d) < 1e-25)
        return false;
    const Square before = a;
    Square column = before;
    for (int i = 0; i < a.n; ++i)
        for (int j = 0; j <= i; ++j)
            if (i != k && j != k)
                a(i, j) = direction > 0 ? a(i, j) - column.lower(j, k) * (column.lower(i, k) / p)
                                        : a(i, j) + column.lower(j, k) * (column.lower(i, k) / d);
    if (direction > 0)
        for (int i = 0; i < a.n; ++i)
            a.lower(i, k) = i == k ? d : a.lower(i, k) / p;
    return true;
}

Status plain_sweep(Square& a, int first, int last, int direction)
{
    for (int k = first; k <= last; ++k)
        if (!plain_pivot(a, k, direction))
            return Status::singular;
    for (int j = 0; j < a.n; ++j)
        for (int i = 0; i < j; ++i)
            a(i, j) = a(j, i);
    return Status::success;
}

TEST(Cholesky, HasTheBitsOfThePlainRecurrenceAtEveryLevel)
{
    constexpr double infinity = std::numeric_limits<double>::infinity();
    struct Case {
        const char* name;
        int order, rows;
        double spoiled; // what stands at (order / 3, order / 2) instead
    };
    std::vector<Case> cases;
    for (const int n : {1, 2, 3, 4, 5, 7, 8, 9, 15, 16, 17, 24, 33, 63, 64, 65, 100, 150})
        cases.push_back({"definite", n, n + 2, 0});
    for (const int n : {6, 12, 30, 70, 101}) {
        cases.push_back({"semidefinite", n, n / 2, 0});
        cases.push_back({"missing", n, n + 2, s_missing});
        cases.push_back({"infinite", n, n + 2, infinity});
        cases.push_back({"indefinite", n, n + 2, 1e5});
    }
    for (const auto& c : cases) {
        SCOPED_TRACE(testing::Message() << c.name << ' ' << c.order);
        Square given = positive_definite(c.order, 7, c.rows);
        for (int i = 0; i < c.order; ++i)
            for (int j = 0; j < i; ++j)
                given(i, j) = 1e77; // nobody looks
        if (c.spoiled != 0)
            given(c.order / 3, c.order / 2) = c.spoiled;
        Square expected = given;
        const Status status = plain_cholesky(expected);
        at_every_level([&] {
            Square actual = given;
            EXPECT_EQ(cholesky_in_place(actual.data(), c.order), status);
            expect_same_bits(actual, expected); // a matrix without a factor stays as it is
        });
    }
}

// Zeros, and columns that depend on others exactly: every quotient and root is a whole number.
TEST(Cholesky, FactorsSemidefiniteMatricesExactly)
{
    for (const int n : {2, 5, 11, 16, 20, 70}) {
        Square factor(n), product(n);
        for (int j = 0; j < n; ++j)
            for (int i = 0; i <= j; ++i)
                factor(i, j) = i % 4 == 1 ? 0 : i == j ? 1 + i % 3 : (i * j) % 5 - 2;
        for (int i = 0; i < n; ++i)
            for (int j = 0; j < n; ++j)
                for (int k = 0; k < n; ++k)
                    product(i, j) += factor(k, i) * factor(k, j);
        at_every_level([&] {
            Square actual = product;
            EXPECT_EQ(cholesky_in_place(actual.data(), n), Status::success);
            EXPECT_EQ(actual.values, factor.values) << n;
        });
    }
    Square indefinite(2, {1, 2, 2, 1});
    EXPECT_EQ(cholesky_in_place(indefinite.data(), 2), Status::singular);
    EXPECT_EQ(indefinite.values, std::vector<double>({1, 2, 2, 1}));
}

TEST(Sweep, HasTheBitsOfOnePivotAfterTheOtherAtEveryLevel)
{
    for (const int n : {1, 2, 3, 5, 8, 9, 17, 40, 64, 65, 80, 131}) {
        const Square given = positive_definite(n, 3, n + 3);
        for (const int first : {0, n / 3})
            for (const int last : {first, n / 2, n - 1})
                for (const int bad : {-1, n / 2}) // a pivot that is zero when its turn comes
                    for (const int direction : {1, -1}) {
                        SCOPED_TRACE(testing::Message() << n << ": " << first << " to " << last << ", bad " << bad
                                                        << ", direction " << direction);
                        Square start = given;
                        for (int i = 0; bad >= 0 && i < n; ++i)
                            start.lower(i, bad) = 0;
                        start(0, n - 1) = 5; // the upper triangle is not read
                        Square expected = start;
                        const Status status = plain_sweep(expected, first, last, direction);
                        at_every_level([&] {
                            Square actual = start;
                            EXPECT_EQ(sweep(actual.data(), n, first, last, direction), status);
                            expect_same_bits(actual, expected);
                        });
                    }
    }
}

TEST(Sweep, OfAllPivotsIsMinusTheInverse)
{
    for (const int n : {4, 30, 90}) {
        Square given = positive_definite(n, 11, 2 * n), inverse = given;
        ASSERT_EQ(sweep(inverse.data(), n, 0, n - 1, 1), Status::success);
        for (int i = 0; i < n; ++i)
            for (int j = 0; j < n; ++j) {
                double sum = 0;
                for (int k = 0; k < n; ++k)
                    sum -= given(i, k) * inverse(k, j);
                EXPECT_NEAR(sum, i == j ? 1 : 0, 1e-11);
            }
        ASSERT_EQ(sweep(inverse.data(), n, 0, n - 1, -1), Status::success);
        for (int i = 0; i < n; ++i)
            for (int j = 0; j < n; ++j)
                EXPECT_NEAR(inverse(i, j), given(i, j), 1e-9 * given(i, i));
    }
}

TEST(Sweep, ChecksRangeDirectionAndPivots)
{
    constexpr double nan = s_missing;
    struct Case {
        const char* name;
        std::vector<double> given;
        int first, last, direction;
        Status status;
        std::vector<double> expected;
    };
    const Case cases[] = {
        {"forward", {4}, 0, 0, 1, Status::success, {-0.25}},
        {"reverse", {-0.25}, 0, 0, -1, Status::success, {4}},
        {"only made symmetric", {1, 2, 9, 3}, 1, 0, 1, Status::success, {1, 2, 2, 3}},
        {"first too small", {1, 2, 9, 3}, -1, 0, 1, Status::invalid_pivots, {1, 2, 9, 3}},
        {"first too large", {1, 2, 9, 3}, 2, 1, 1, Status::invalid_pivots, {1, 2, 9, 3}},
        {"last too large", {1, 2, 9, 3}, 0, 2, 1, Status::invalid_pivots, {1, 2, 9, 3}},
        {"no direction", {1, 2, 9, 3}, 1, 0, 0, Status::invalid_pivots, {1, 2, 9, 3}},
        {"small pivot", {9e-26, 2, 9, 3}, 0, 0, 1, Status::singular, {9e-26, 2, 9, 3}},
        {"smallest pivot", {1e-25}, 0, 0, 1, Status::success, {-1 / 1e-25}},
        {"missing pivot forward", {nan}, 0, 0, 1, Status::singular, {nan}},
        {"missing pivot in reverse", {nan}, 0, 0, -1, Status::success, {nan}},
        {"huge pivot in reverse", {0x1p87, 0x1p87, 9, 3}, 0, 0, -1, Status::singular, {-0x1p-87, -1, 9, 3}},
        {"huge pivot alone", {0x1p87}, 0, 0, -1, Status::success, {-0x1p-87}},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        const int n = c.given.size() == 1 ? 1 : 2;
        Square actual(n, c.given), expected(n, c.expected);
        EXPECT_EQ(sweep(actual.data(), n, c.first, c.last, c.direction), c.status);
        expect_same_bits(actual, expected);
    }
}

TEST(GramSchmidt, MakesColumnsOrthonormal)
{
    constexpr int rows = 9, cols = 5;
    std::vector<double> a(std::size_t{rows} * cols);
    for (int i = 0; i < rows * cols; ++i)
        a[static_cast<std::size_t>(i)] = (i * i) % 17 - 8 + i % 3;
    const auto given = a;
    ASSERT_EQ(orthonormalise_in_place(a.data(), rows, cols), Status::success);
    const auto dot = [](const std::vector<double>& x, std::size_t i, const std::vector<double>& y, std::size_t j) {
        double sum = 0;
        for (std::size_t k = 0; k < rows; ++k)
            sum += x[i * rows + k] * y[j * rows + k];
        return sum;
    };
    for (std::size_t i = 0; i < cols; ++i)
        for (std::size_t j = 0; j < cols; ++j) {
            EXPECT_NEAR(dot(a, i, a, j), i == j ? 1 : 0, 1e-13);
            if (i > j) { // a column lies in the span of the new ones up to its own
                EXPECT_NEAR(dot(a, i, given, j), 0, 1e-12);
            } else if (i == j) {
                EXPECT_GT(dot(a, i, given, i), 0);
            }
        }
}

TEST(GramSchmidt, RefusesDependentColumns)
{
    std::vector<double> equal = {3, 4, 3, 4}, wide = {1, 0, 1, 1, 1, 2}, missing = {1, s_missing};
    EXPECT_EQ(orthonormalise_in_place(equal.data(), 2, 2), Status::singular);
    EXPECT_EQ(equal[0], 0.6);
    EXPECT_EQ(equal[1], 0.8);
    EXPECT_EQ(orthonormalise_in_place(wide.data(), 2, 3), Status::singular);
    EXPECT_EQ(orthonormalise_in_place(missing.data(), 2, 1), Status::singular);
    EXPECT_EQ(orthonormalise_in_place(nullptr, 0, 2), Status::singular);
    EXPECT_EQ(orthonormalise_in_place(nullptr, 3, 0), Status::success);
}

TEST(Factors, ReportTheWantOfMemoryAndStopWhenAsked)
{
    constexpr int n = 100;
    const Square given = positive_definite(n, 5, n + 1);
    const auto factor = [](Square& a) { return cholesky_in_place(a.data(), n); };
    const auto sweep_all = [](Square& a) { return sweep(a.data(), n, 0, n - 1, 1); };
    const auto orthonormalise = [](Square& a) { return orthonormalise_in_place(a.data(), n, n); };
    const auto check = [&given](auto call, bool allocates) {
        Square a = given;
        fail_allocation(1);
        const Status status = call(a);
        fail_allocation(0);
        EXPECT_EQ(status, allocates ? Status::out_of_memory : Status::success);
        if (allocates) {
            EXPECT_EQ(a.values, given.values);
        }
        a = given;
        request_break(2);
        EXPECT_EQ(call(a), Status::stopped);
        request_break(0);
    };
    check(factor, true);
    check(sweep_all, true);
    check(orthonormalise, false);
}

} // namespace
