// Linear systems: the factors of the textbook's column loop, bit for bit, and solutions that hold.

#include "core/break_check.h"
#include "core/compare.h"
#include "core/memory.h"
#include "matrix/solve.h"
#include "platform/levels.h"

#include <Eigen/Dense>
#include <bit>
#include <cfenv>
#include <cmath>
#include <cstdint>
#include <gtest/gtest.h>
#include <limits>
#include <random>
#include <vector>

namespace {

using qmml::matrix::solve_in_place;
using qmml::matrix::Status;
using Matrix = Eigen::MatrixXd;

constexpr int s_orders[] = {1,  2,  3,  4,  5,  6,  7,  8,  9,  12,  13,  15, 16,
                            17, 23, 24, 25, 31, 40, 63, 64, 65, 100, 137, 200};

// Crout, column by column.
bool textbook_factors(Matrix& a)
{
    const auto n = a.rows();
    Eigen::VectorXd scale(n);
    for (Eigen::Index i = 0; i < n; ++i) {
        double largest = 0;
        for (Eigen::Index j = 0; j < n; ++j)
            if (qmml::is_greater(std::fabs(a(i, j)), largest))
                largest = std::fabs(a(i, j));
        if (qmml::is_less(largest, 1e-20))
            return false;
        scale(i) = 1.0 / largest;
    }
    for (Eigen::Index j = 0; j < n; ++j) {
        Eigen::Index pivot = j;
        double best = 0;
        for (Eigen::Index i = 0; i < n; ++i) {
            double sum = a(i, j);
            for (Eigen::Index k = 0; k < std::min(i, j); ++k)
                sum -= a(i, k) * a(k, j);
            a(i, j) = sum;
            if (i >= j && qmml::is_greater_equal(scale(i) * std::fabs(sum), best)) {
                best = scale(i) * std::fabs(sum);
                pivot = i;
            }
        }
        for (Eigen::Index k = 0; k < n; ++k)
            std::swap(a(j, k), a(pivot, k));
        scale(pivot) = scale(j);
        if (qmml::is_equal(a(j, j), 0.0))
            a(j, j) = 1e-20;
        for (Eigen::Index i = j + 1; i < n; ++i)
            a(i, j) /= a(j, j);
    }
    return true;
}

bool same_bits(const Matrix& a, const Matrix& b)
{
    for (Eigen::Index i = 0; i < a.size(); ++i)
        if (std::bit_cast<std::uint64_t>(a.data()[i]) != std::bit_cast<std::uint64_t>(b.data()[i]) &&
            !(std::isnan(a.data()[i]) && std::isnan(b.data()[i])))
            return false;
    return a.size() == b.size();
}

Status solve(Matrix& a, Matrix& b)
{
    return solve_in_place(a.data(), b.data(), int(a.rows()), int(b.cols()));
}

// normal: numbers of all sizes; signs: -1, 0 and 1, which make equal merits and zero pivots.
Matrix random_matrix(std::mt19937_64& generator, int rows, int cols, bool signs)
{
    std::normal_distribution<double> normal;
    std::uniform_int_distribution<int> sign(-1, 1);
    return Matrix::NullaryExpr(rows, cols, [&] { return signs ? sign(generator) : normal(generator); });
}

TEST(Solve, HasTheTextbooksFactorsAtEveryLevel)
{
    std::mt19937_64 generator(1);
    for (const int n : s_orders)
        for (const bool signs : {false, true, true}) {
            SCOPED_TRACE(testing::Message() << "n " << n << (signs ? ", signs" : ", normal"));
            Matrix a = random_matrix(generator, n, n, signs);
            Matrix b = random_matrix(generator, n, 2, false);
            b.col(1) = b.col(0);
            if (!signs && n > 3)
                a.row(n / 2) *= 1e-6; // the scale takes this back
            Matrix factors = a;
            const bool regular = textbook_factors(factors);
            Matrix first;
            for (const auto level : qmml::platform::supported_levels()) {
                const qmml::platform::ForcedLevel forced(level);
                Matrix lu = a, x = b;
                ASSERT_EQ(solve(lu, x), regular ? Status::success : Status::singular);
                EXPECT_TRUE(same_bits(lu, regular ? factors : a)) << "level " << int(level);
                if (first.size() == 0)
                    first = x;
                EXPECT_TRUE(same_bits(x, first)) << "level " << int(level);
                EXPECT_TRUE(same_bits(x.col(0), x.col(1))) << "level " << int(level);
            }
        }
}

TEST(Solve, IsAsCloseAsTheConditionAllows)
{
    std::mt19937_64 generator(2);
    for (const int n : s_orders) {
        const Matrix a = random_matrix(generator, n, n, false), b = random_matrix(generator, n, 3, false);
        const Eigen::JacobiSVD<Matrix> svd(a);
        const double condition = svd.singularValues()(0) / svd.singularValues()(n - 1);
        const Matrix expected = a.fullPivLu().solve(b);
        Matrix lu = a, x = b;
        ASSERT_EQ(solve(lu, x), Status::success);
        EXPECT_LE((x - expected).norm(), 1e-14 * condition * expected.norm()) << n;
        // Refined: the backward error is that of the residual's own rounding.
        EXPECT_LE((a * x - b).lpNorm<Eigen::Infinity>(), 1e-15 * n * a.cwiseAbs().maxCoeff() * x.cwiseAbs().maxCoeff())
            << n;
    }
}

TEST(Solve, ChoosesPivotsByScaledMerit)
{
    const Matrix a{{0.001, 1, 2}, {1000, 3, 1}, {2, 2, 2}};
    Matrix lu = a, x = Matrix::Ones(3, 1);
    ASSERT_EQ(solve(lu, x), Status::success);
    const Matrix expected{{2, 2, 2}, {500, -997, -999}, {0.0005, -0.00100200602, 0.997995988}};
    EXPECT_LT((lu - expected).cwiseAbs().maxCoeff(), 1e-9);

    // Equal merits: the last row. What is left of a singular matrix is replaced, not reported.
    Matrix singular{{1, 2}, {2, 4}}, y = Matrix::Ones(2, 1);
    ASSERT_EQ(solve(singular, y), Status::success);
    EXPECT_TRUE(same_bits(singular, Matrix{{2, 4}, {0.5, 1e-20}}));

    // As many orders: a zero row in the middle of the elimination, with blocks on both sides of it.
    for (int n : {4, 9, 40}) {
        Matrix ones = Matrix::Identity(n, n), rhs = Matrix::Ones(n, 1);
        ones.row(n - 2) = ones.row(1);
        ASSERT_EQ(solve(ones, rhs), Status::success);
        EXPECT_EQ(ones(n - 2, n - 2), 1e-20) << n;
    }
}

TEST(Solve, RefusesTinyRows)
{
    const double nan = std::numeric_limits<double>::quiet_NaN();
    struct Case {
        double value;
        Status status;
    };
    for (const Case c : {Case{0, Status::singular}, Case{-9e-21, Status::singular}, Case{1.1e-20, Status::success},
                         Case{nan, Status::singular}})
        for (int n : {2, 8, 20}) {
            Matrix a = Matrix::Identity(n, n), b = Matrix::Ones(n, 1);
            a.row(n / 2).setZero();
            a(n / 2, n / 2) = c.value;
            const Matrix before = a;
            EXPECT_EQ(solve(a, b), c.status) << c.value << ", n " << n;
            EXPECT_TRUE(same_bits(a, before)); // diagonal: it is its own factors
            EXPECT_EQ(b(0, 0), 1.0);
        }
}

TEST(Solve, SurvivesWhatIsNotFinite)
{
    std::mt19937_64 generator(3);
    for (const int n : s_orders)
        for (double value :
             {std::numeric_limits<double>::quiet_NaN(), std::numeric_limits<double>::infinity(), 1e308}) {
            Matrix a = random_matrix(generator, n, n, false), b = Matrix::Zero(n, 2);
            b.row(n / 2).setOnes();
            for (Eigen::Index i = 0; i < a.size(); i += 5)
                a.data()[i] = value;
            Matrix textbook = a;
            const bool regular = textbook_factors(textbook);
            for (const auto level : qmml::platform::supported_levels()) {
                const qmml::platform::ForcedLevel forced(level);
                Matrix lu = a, x = b;
                ASSERT_EQ(solve(lu, x), regular ? Status::success : Status::singular);
                EXPECT_TRUE(same_bits(lu, textbook)) << "n " << n << ", " << value << ", level " << int(level);
                EXPECT_TRUE(same_bits(x.col(0), x.col(1))) << "n " << n << ", " << value << ", level " << int(level);
            }
        }
}

TEST(Solve, TakesNothingOffForLeadingZeros)
{
    for (const auto level : qmml::platform::supported_levels())
        for (int n : {4, 8, 12, 17}) {
            const qmml::platform::ForcedLevel forced(level);
            Matrix a = Matrix::Identity(n, n), b = Matrix::Zero(n, 2);
            a.bottomRightCorner(2, 2) << 1e-10, 1e-10, 1e300, 1e308;
            b.row(n - 1).setOnes();
            ASSERT_EQ(solve(a, b), Status::success);
            EXPECT_EQ(a(n - 1, n - 2), std::numeric_limits<double>::infinity()); // times 0 it would be a NaN
            EXPECT_EQ(b, Matrix::Zero(n, 2)) << "n " << n << ", level " << int(level);
        }
}

TEST(Solve, RaisesNoFaultOfItsOwn)
{
    std::mt19937_64 generator(4);
    for (const auto level : qmml::platform::supported_levels()) {
        const qmml::platform::ForcedLevel forced(level);
        for (const int n : s_orders) {
            // The first row becomes U's and is huge: divided by a later pivot it would overflow.
            Matrix a = random_matrix(generator, n, n, false), b(n, 1);
            a += 2 * n * Matrix::Identity(n, n);
            a *= 1e-15;
            a.row(0) *= 1e15;
            a.row(0) *= 1e300;
            std::feclearexcept(FE_ALL_EXCEPT);
            ASSERT_EQ(solve_in_place(a.data(), b.data(), n, 0), Status::success);
            EXPECT_EQ(std::fetestexcept(FE_INVALID | FE_DIVBYZERO | FE_OVERFLOW), 0) << n << ", level " << int(level);
        }
    }
}

TEST(Solve, ReportsEveryAllocationThatFails)
{
    const Matrix a = Matrix::Identity(17, 17) * 3, b = Matrix::Ones(17, 1);
    for (long failing = 1; failing <= 4; ++failing) {
        Matrix lu = a, x = b;
        qmml::fail_allocation(failing);
        EXPECT_EQ(solve(lu, x), Status::out_of_memory) << failing;
        EXPECT_TRUE(same_bits(lu, a) && same_bits(x, b));
    }
    for (int n : {16, 17}) { // small orders ask for nothing, the others four times
        Matrix lu = a.topLeftCorner(n, n), x = b.topRows(n);
        qmml::fail_allocation(n == 16 ? 1 : 5);
        EXPECT_EQ(solve(lu, x), Status::success);
        qmml::fail_allocation(0);
    }
}

TEST(Solve, AsksForAStopAtEveryColumn)
{
    for (int n : {1, 5, 12, 33})
        for (int check = 1; check <= n + 1; ++check) {
            Matrix a = Matrix::Identity(n, n), b = Matrix::Ones(n, 1);
            qmml::request_break(check);
            EXPECT_EQ(solve(a, b), check <= n ? Status::stopped : Status::success) << n << " at " << check;
            qmml::request_break(0);
        }
}

TEST(Solve, TakesEmptyArrays)
{
    EXPECT_EQ(solve_in_place(nullptr, nullptr, 0, 1), Status::success);
    EXPECT_EQ(solve_in_place(nullptr, nullptr, -3, -1), Status::success);
    double a = 2;
    EXPECT_EQ(solve_in_place(&a, nullptr, 1, -1), Status::success);
    EXPECT_EQ(a, 2.0);
}

} // namespace
