// The product has the bits of the plain triple loop, for every shape and instruction set.

#include "core/break_check.h"
#include "matrix/product.h"
#include "platform/levels.h"

#include <bit>
#include <cfenv>
#include <cmath>
#include <cstdint>
#include <gtest/gtest.h>
#include <limits>
#include <random>
#include <vector>

namespace {

using qmml::matrix::multiply;
using qmml::matrix::Status;
using Values = std::vector<double>;

constexpr double s_infinity = std::numeric_limits<double>::infinity();
constexpr double s_nan = std::numeric_limits<double>::quiet_NaN();

struct Shape {
    int rows, cols, depth;
};

Values plain_product(const Values& a, const Values& b, Shape s)
{
    Values c(std::size_t(s.rows) * std::size_t(s.cols));
    for (int j = 0; j < s.cols; ++j)
        for (int i = 0; i < s.rows; ++i) {
            double sum = 0.0;
            for (int k = 0; k < s.depth; ++k)
                sum += a[std::size_t(i + k * s.rows)] * b[std::size_t(k + j * s.depth)];
            c[std::size_t(i + j * s.rows)] = sum;
        }
    return c;
}

Values random_values(std::mt19937_64& generator, int count, double specials)
{
    static constexpr double s_special[] = {0.0, -0.0, s_nan, s_infinity, -s_infinity, 5e-324, 1e300, -1e300};
    std::normal_distribution<double> normal;
    std::bernoulli_distribution special(specials);
    std::uniform_int_distribution<std::size_t> which(0, std::size(s_special) - 1);
    Values values(static_cast<std::size_t>(count));
    for (double& v : values)
        v = special(generator) ? s_special[which(generator)] : normal(generator);
    return values;
}

// Any NaN for a NaN; the guard numbers around c have to be there still.
void expect_product(const Values& a, const Values& b, Shape s)
{
    SCOPED_TRACE(testing::Message() << s.rows << " x " << s.cols << ", depth " << s.depth);
    const Values expected = plain_product(a, b, s);
    for (const auto level : qmml::platform::supported_levels()) {
        const qmml::platform::ForcedLevel forced(level);
        constexpr std::size_t margin = 8;
        Values c(expected.size() + 2 * margin, 4711.0);
        ASSERT_EQ(multiply(c.data() + margin, s.rows, s.cols, a.data(), s.rows, s.depth, b.data(), s.depth, s.cols),
                  Status::success);
        for (std::size_t i = 0; i < c.size(); ++i) {
            const bool inside = i >= margin && i < expected.size() + margin;
            const double wanted = inside ? expected[i - margin] : 4711.0;
            if (std::isnan(wanted) && std::isnan(c[i]))
                continue;
            ASSERT_EQ(std::bit_cast<std::uint64_t>(c[i]), std::bit_cast<std::uint64_t>(wanted))
                << "level " << int(level) << " at " << std::int64_t(i) - std::int64_t(margin);
        }
    }
}

TEST(Product, HasThePlainLoopsBits)
{
    std::mt19937_64 generator(1);
    std::vector<Shape> shapes = {{64, 64, 64},  {100, 70, 130}, {24, 64, 255}, {25, 65, 256},   {49, 257, 257},
                                 {200, 64, 40}, {97, 300, 129}, {23, 513, 20}, {130, 100, 600}, {1, 70, 300}};
    for (int rows : {1, 2, 3, 4, 5, 7, 8, 9, 11, 15, 16, 17, 23, 24, 25, 31, 48, 50})
        for (int cols : {1, 2, 3, 4, 7, 8, 9, 15})
            shapes.push_back({rows, cols, 1 + (rows + cols) % 7});
    for (const double specials : {0.0, 0.02})
        for (const Shape s : shapes)
            expect_product(random_values(generator, s.rows * s.depth, specials),
                           random_values(generator, s.depth * s.cols, specials), s);
}

TEST(Product, RaisesNoFaultThatThePlainLoopDoesNot)
{
    for (const auto level : qmml::platform::supported_levels()) {
        const qmml::platform::ForcedLevel forced(level);
        for (int rows = 1; rows <= 26; ++rows) {
            const Values a(static_cast<std::size_t>(3 * rows), 2.0);
            const Values b = {s_infinity, 1.0, s_infinity};
            Values c(static_cast<std::size_t>(rows));
            std::feclearexcept(FE_ALL_EXCEPT);
            multiply(c.data(), rows, 1, a.data(), rows, 3, b.data(), 3, 1);
            EXPECT_EQ(std::fetestexcept(FE_ALL_EXCEPT), 0) << rows << " rows, level " << int(level);
        }
    }
}

TEST(Product, ComparesTheShapesFirst)
{
    struct Case {
        const char* name;
        int c_rows, c_cols, a_rows, a_cols, b_rows, b_cols;
        Status status;
        double first; // of c, which is all -1 before
    };
    static constexpr Case s_cases[] = {
        {"inner counts differ", 2, 2, 2, 3, 2, 2, Status::singular, -1},
        {"rows differ", 2, 2, 1, 2, 2, 2, Status::singular, -1},
        {"columns differ", 2, 2, 2, 2, 2, 1, Status::singular, -1},
        {"negative and different", 2, 2, 2, 0, -1, 2, Status::singular, -1},
        {"no rows", 0, 2, 0, 2, 2, 2, Status::success, -1},
        {"negative columns", 2, -3, 2, 2, 2, -3, Status::success, -1},
        {"no terms", 2, 2, 2, 0, 0, 2, Status::success, 0},
        {"fewer than none", 2, 2, 2, -5, -5, 2, Status::success, 0},
    };
    for (const Case& c : s_cases) {
        SCOPED_TRACE(c.name);
        const Values a(6, 1.0), b(6, 1.0);
        Values result(4, -1.0);
        EXPECT_EQ(
            multiply(result.data(), c.c_rows, c.c_cols, a.data(), c.a_rows, c.a_cols, b.data(), c.b_rows, c.b_cols),
            c.status);
        EXPECT_EQ(result, Values(4, c.first));
    }
    EXPECT_EQ(multiply(nullptr, 0, 0, nullptr, 0, 0, nullptr, 0, 0), Status::success);
}

TEST(Product, StopsWhenAskedTo)
{
    const int n = 300;
    const Values a(n, 1.0), b(n, 1.0);
    Values c(static_cast<std::size_t>(n) * n);
    for (long check : {1, 2}) {
        qmml::request_break(check);
        EXPECT_EQ(multiply(c.data(), n, n, a.data(), n, 1, b.data(), 1, n), Status::stopped);
    }
    qmml::request_break(0);
    EXPECT_EQ(multiply(c.data(), n, n, a.data(), n, 1, b.data(), 1, n), Status::success);
}

} // namespace
