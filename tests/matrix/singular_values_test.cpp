#include "matrix/singular_values.h"

#include "core/break_check.h"
#include "core/memory.h"
#include "platform/levels.h"

#include <Eigen/Dense>
#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <random>
#include <string>
#include <vector>

namespace {

using Eigen::MatrixXd;
using Eigen::VectorXd;
using qmml::matrix::Status;

constexpr double s_epsilon = std::numeric_limits<double>::epsilon();

struct Decomposition {
    explicit Decomposition(const MatrixXd& a) : u(a), v(a.cols(), a.cols()), w(a.cols())
    {
        status = qmml::matrix::singular_value_decompose(u.data(), static_cast<int>(a.rows()),
                                                        static_cast<int>(a.cols()), w.data(), v.data());
    }
    MatrixXd u, v;
    VectorXd w;
    Status status;
};

VectorXd values_of(const MatrixXd& a)
{
    VectorXd w(a.cols());
    EXPECT_EQ(qmml::matrix::singular_values(a.data(), static_cast<int>(a.rows()), static_cast<int>(a.cols()), w.data()),
              Status::success);
    return w;
}

double rank_of(const MatrixXd& a)
{
    double rank = -1;
    EXPECT_EQ(qmml::matrix::matrix_rank(a.data(), static_cast<int>(a.rows()), static_cast<int>(a.cols()), rank),
              Status::success);
    return rank;
}

MatrixXd pseudo_inverse_of(const MatrixXd& a)
{
    MatrixXd p(a.cols(), a.rows());
    EXPECT_EQ(qmml::matrix::pseudo_inverse(a.data(), static_cast<int>(a.rows()), static_cast<int>(a.cols()), p.data()),
              Status::success);
    return p;
}

MatrixXd random_matrix(int rows, int cols, unsigned seed = 1)
{
    std::mt19937 generator(seed);
    std::normal_distribution<double> normal;
    return MatrixXd::NullaryExpr(rows, cols, [&] { return normal(generator); });
}

// With these singular values, between random orthonormal bases.
MatrixXd with_values(const VectorXd& values, int rows)
{
    const auto n = static_cast<int>(values.size());
    const MatrixXd left = Eigen::HouseholderQR<MatrixXd>(random_matrix(rows, rows, 2)).householderQ();
    const MatrixXd right = Eigen::HouseholderQR<MatrixXd>(random_matrix(n, n, 3)).householderQ();
    return left.leftCols(n) * values.asDiagonal() * right.transpose();
}

double largest(const MatrixXd& a)
{
    return a.size() == 0 ? 0.0 : a.cwiseAbs().maxCoeff();
}

double distance_from_orthonormal(const MatrixXd& q)
{
    return largest(q.transpose() * q - MatrixXd::Identity(q.cols(), q.cols()));
}

// Golub and Reinsch, Numer. Math. 14 (1970), 403-420.
MatrixXd published_matrix()
{
    MatrixXd a(8, 5);
    a << 22, 10, 2, 3, 7, 14, 7, 10, 0, 8, -1, 13, -1, -11, 3, -3, -2, 13, -2, 4, 9, 8, 1, -2, 4, 9, 1, -7, 5, -1, 2,
        -6, 6, 5, 1, 4, 5, 0, -2, 2;
    return a;
}

struct NamedMatrix {
    std::string name;
    MatrixXd a;
};

// Zeros on the diagonal of a bidiagonal matrix have to be rotated out of the way first.
MatrixXd bidiagonal_with_zeros(int n)
{
    MatrixXd a = MatrixXd::Zero(n, n);
    for (int i = 0; i < n; ++i) {
        a(i, i) = i % 7;
        if (i > 0)
            a(i - 1, i) = 1;
    }
    return a;
}

std::vector<NamedMatrix> matrices()
{
    std::vector<NamedMatrix> all = {
        {"published", published_matrix()},
        {"zero", MatrixXd::Zero(5, 4)},
        {"large zero", MatrixXd::Zero(40, 33)},
        {"identity", MatrixXd::Identity(20, 20)},
        {"zeros on the diagonal", bidiagonal_with_zeros(12)},
        {"many zeros on the diagonal", bidiagonal_with_zeros(50)},
        {"low rank", random_matrix(60, 4) * random_matrix(4, 50, 2)},
        {"equal values", with_values(VectorXd::Constant(30, 2.5), 35)},
        {"graded", with_values(VectorXd::LinSpaced(24, 0, -30).array().exp(), 24)},
        {"zero columns", MatrixXd(random_matrix(20, 10) * VectorXd::LinSpaced(10, 0, 9).asDiagonal())},
        {"tiny", random_matrix(20, 20) * 1e-200},
        {"great", random_matrix(20, 20) * 1e151},
        {"tiny and small", random_matrix(6, 6) * 1e-300},
    };
    for (const auto& [m, n] : {std::pair{1, 1},
                               {1, 5},
                               {5, 1},
                               {3, 2},
                               {2, 3},
                               {4, 4},
                               {9, 7},
                               {16, 16},
                               {17, 17},
                               {16, 3},
                               {40, 3},
                               {3, 40},
                               {64, 64},
                               {65, 63},
                               {63, 65},
                               {100, 100},
                               {150, 131}})
        all.push_back({std::to_string(m) + " x " + std::to_string(n), random_matrix(m, n)});
    return all;
}

TEST(SingularValueDecomposition, GivesOrthonormalFactorsOfTheMatrix)
{
    for (const auto& [name, a] : matrices()) {
        SCOPED_TRACE(name);
        const Decomposition d(a);
        ASSERT_EQ(d.status, Status::success);
        const auto order = static_cast<double>(std::max(a.rows(), a.cols()));
        const double bound = 8 * std::sqrt(order) * s_epsilon, norm = d.w(0);
        EXPECT_LE(distance_from_orthonormal(d.v), 2 * bound);
        if (a.rows() >= a.cols()) {
            EXPECT_LE(distance_from_orthonormal(d.u), 2 * bound);
        }
        EXPECT_LE(largest(d.u * d.w.asDiagonal() * d.v.transpose() - a), bound * norm);
        EXPECT_TRUE((d.w.array() >= 0).all());
        for (Eigen::Index k = 1; k < d.w.size(); ++k)
            EXPECT_GE(d.w(k - 1), d.w(k));

        const auto exact =
            Eigen::BDCSVD<Eigen::Matrix<long double, Eigen::Dynamic, Eigen::Dynamic>>(a.cast<long double>());
        const VectorXd expected = exact.singularValues().cast<double>();
        const auto count = expected.size();
        EXPECT_LE(largest(d.w.head(count) - expected), bound * norm);
        EXPECT_LE(largest(d.w.tail(d.w.size() - count)), bound * norm);
        EXPECT_EQ(values_of(a), d.w);
    }
}

TEST(SingularValueDecomposition, HasTheSameBitsAtAllLevels)
{
    for (const auto& [name, a] : matrices()) {
        SCOPED_TRACE(name);
        const qmml::platform::ForcedLevel baseline(qmml::platform::Level::baseline);
        const Decomposition expected(a);
        for (const auto level : qmml::platform::supported_levels()) {
            const qmml::platform::ForcedLevel forced(level);
            const Decomposition d(a);
            EXPECT_EQ(d.w, expected.w);
            EXPECT_EQ(d.u, expected.u);
            EXPECT_EQ(d.v, expected.v);
        }
    }
}

TEST(SingularValues, MatchThePublishedOnes)
{
    const VectorXd w = values_of(published_matrix());
    EXPECT_NEAR(w(0), std::sqrt(1248.0), 1e-13);
    EXPECT_NEAR(w(1), 20.0, 1e-13);
    EXPECT_NEAR(w(2), std::sqrt(384.0), 1e-13);

    const MatrixXd a{{1, 2}, {3, 4}, {5, 6}};
    for (const MatrixXd& shape : {a, MatrixXd(a.transpose())}) {
        const VectorXd two = values_of(shape);
        EXPECT_NEAR(two(0), 9.52551809156510822, 1e-14);
        EXPECT_NEAR(two(1), 0.514300580658644272, 1e-14);
    }
}

TEST(MatrixRank, CountsValuesAboveAnAbsoluteThreshold)
{
    EXPECT_EQ(rank_of(published_matrix()), 3.0);
    EXPECT_EQ(rank_of(published_matrix() * 100), 5.0);
    EXPECT_EQ(rank_of(MatrixXd::Zero(3, 4)), 0.0);
    EXPECT_EQ(rank_of(MatrixXd{{1, 0}, {0, 1e-15}}), 1.0);
    EXPECT_EQ(rank_of(MatrixXd{{1, 0, 0}, {0, 1e-14, 0}, {0, 0, 2e-14}}), 2.0);
    EXPECT_EQ(rank_of(MatrixXd::Identity(30, 30) * 1e-13), 30.0);
    EXPECT_EQ(rank_of(MatrixXd::Identity(30, 30) * 1e-15), 0.0);
    EXPECT_EQ(rank_of(random_matrix(7, 40)), 7.0);
}

TEST(PseudoInverse, MeetsThePenroseConditions)
{
    VectorXd deficient = VectorXd::LinSpaced(40, 3, 1);
    deficient.tail(15).setZero();
    const NamedMatrix cases[] = {
        {"published", published_matrix()},
        {"square", random_matrix(6, 6)},
        {"tall", random_matrix(50, 21)},
        {"wide", random_matrix(21, 50)},
        {"large", random_matrix(130, 70)},
        {"deficient", with_values(deficient * 1e-3, 45)}, // roundings stay below the threshold
        {"deficient and wide", with_values(deficient * 1e-3, 45).transpose()},
    };
    for (const auto& [name, a] : cases) {
        SCOPED_TRACE(name);
        const MatrixXd p = pseudo_inverse_of(a), ap = a * p, pa = p * a;
        const double condition = a.norm() * p.norm(), bound = 4 * condition * s_epsilon;
        EXPECT_LE(largest(ap * a - a), bound * a.norm());
        EXPECT_LE(largest(pa * p - p), bound * p.norm());
        EXPECT_LE(largest(ap - ap.transpose()), bound);
        EXPECT_LE(largest(pa - pa.transpose()), bound);
    }
}

TEST(PseudoInverse, LeavesOutWhatIsBelowTheThreshold)
{
    EXPECT_EQ(pseudo_inverse_of(MatrixXd::Zero(3, 5)), MatrixXd::Zero(5, 3));
    EXPECT_EQ(pseudo_inverse_of(MatrixXd{{4, 0}, {0, 1e-15}}), (MatrixXd{{0.25, 0}, {0, 0}}));
    EXPECT_EQ(pseudo_inverse_of(MatrixXd{{4, 0}, {0, 0x1p-40}}), (MatrixXd{{0.25, 0}, {0, 0x1p40}}));
}

TEST(SingularValues, EndInBoundedTimeWhateverTheElements)
{
    constexpr double infinity = std::numeric_limits<double>::infinity();
    for (const double bad : {std::nan(""), infinity, -infinity, 1e308, 5e-324})
        for (const int n : {1, 2, 5, 40})
            for (const int place : {0, n / 2, n * n - 1}) {
                SCOPED_TRACE(testing::Message() << bad << " at " << place << " of order " << n);
                MatrixXd a = random_matrix(n, n);
                a(place % n, place / n) = bad;
                const Decomposition d(a);
                EXPECT_TRUE(d.status == Status::success || d.status == Status::not_converged);
                if (!std::isfinite(bad)) {
                    EXPECT_TRUE(d.status != Status::success || !d.w.allFinite());
                }
            }
    EXPECT_EQ(rank_of(MatrixXd::Constant(3, 3, std::nan(""))), 0.0);
}

// The squares of lengths are beyond the numbers.
TEST(SingularValues, OverflowNearTheRootOfTheGreatestNumber)
{
    const MatrixXd a = random_matrix(5, 5) * 1e160;
    const Decomposition d(a);
    EXPECT_TRUE(d.status == Status::not_converged || !d.w.allFinite());
}

TEST(SingularValues, ReportAFailedAllocationAndARequestToStop)
{
    for (const auto& [rows, cols] : {std::pair{40, 30}, {30, 40}}) {
        const MatrixXd a = random_matrix(rows, cols), before = a;
        MatrixXd p(cols, rows);
        double rank = 0;
        const auto run = [&, m = rows, n = cols](int what) {
            switch (what) {
            case 0: return Decomposition(a).status;
            case 1: return qmml::matrix::pseudo_inverse(a.data(), m, n, p.data());
            default: return qmml::matrix::matrix_rank(a.data(), m, n, rank);
            }
        };
        for (const int what : {0, 1, 2}) {
            SCOPED_TRACE(what);
            long failures = 0, stops = 0;
            for (Status status = Status::out_of_memory; status != Status::success;
                 failures += status != Status::success) {
                qmml::fail_allocation(failures + 1);
                status = run(what);
                ASSERT_TRUE(status == Status::success || status == Status::out_of_memory);
            }
            qmml::fail_allocation(0);
            EXPECT_GT(failures, 0);
            for (Status status = Status::stopped; status != Status::success; stops += status != Status::success) {
                qmml::request_break(stops + 1);
                status = run(what);
                ASSERT_TRUE(status == Status::success || status == Status::stopped);
            }
            qmml::request_break(0);
            EXPECT_GE(stops, cols);
            EXPECT_EQ(a, before);
        }
    }
}

TEST(SingularValues, TakeNothingFromTheHeapUpToOrderSixteen)
{
    const MatrixXd a = random_matrix(16, 16);
    qmml::fail_allocation(1);
    EXPECT_EQ(Decomposition(a).status, Status::success);
    EXPECT_EQ(rank_of(a), 16.0);
    EXPECT_LE(largest(pseudo_inverse_of(a) * a - MatrixXd::Identity(16, 16)), 1e-11);
    qmml::fail_allocation(0);
}

TEST(SingularValues, OfAnEmptyMatrix)
{
    double w[2] = {7, 7}, v[4] = {7, 7, 7, 7}, rank = 7;
    EXPECT_EQ(qmml::matrix::singular_value_decompose(nullptr, 3, 0, nullptr, nullptr), Status::success);
    EXPECT_EQ(qmml::matrix::pseudo_inverse(nullptr, 0, 3, nullptr), Status::success);
    EXPECT_EQ(qmml::matrix::matrix_rank(nullptr, 0, -3, rank), Status::success);
    EXPECT_EQ(rank, 0.0);
    EXPECT_EQ(qmml::matrix::singular_value_decompose(nullptr, 0, 2, w, v), Status::success);
    EXPECT_EQ(Eigen::Map<VectorXd>(w, 2), VectorXd::Zero(2));
    EXPECT_EQ(Eigen::Map<MatrixXd>(v, 2, 2), MatrixXd::Identity(2, 2));
}

} // namespace
