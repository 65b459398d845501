#include "matrix/eigen.h"

#include "core/break_check.h"
#include "core/memory.h"
#include "matrix/rotations.h"
#include "platform/levels.h"

#include <Eigen/Dense>
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <random>
#include <string>
#include <vector>

namespace {

using Eigen::MatrixXd;
using Eigen::VectorXd;
using qmml::matrix::eigen_symmetric;
using qmml::matrix::Status;

constexpr double s_epsilon = std::numeric_limits<double>::epsilon();

struct Result {
    explicit Result(const MatrixXd& a)
        : values(VectorXd::Zero(a.rows())), vectors(MatrixXd::Zero(a.rows(), a.rows())),
          status(eigen_symmetric(a.data(), static_cast<int>(a.rows()), values.data(), vectors.data(), positive_count))
    {
    }
    bool operator==(const Result& other) const
    {
        return status == other.status && positive_count == other.positive_count && values == other.values &&
               vectors == other.vectors;
    }

    VectorXd values;
    MatrixXd vectors;
    int positive_count = -1;
    Status status;
};

MatrixXd random_symmetric(int n, unsigned seed = 1)
{
    std::mt19937 generator(seed);
    std::normal_distribution<double> normal;
    const MatrixXd a = MatrixXd::NullaryExpr(n, n, [&] { return normal(generator); });
    return a + a.transpose();
}

// Eigenvalues as given, in a random orthogonal basis.
MatrixXd with_eigenvalues(const VectorXd& values)
{
    const auto n = static_cast<int>(values.size());
    const MatrixXd q = Eigen::HouseholderQR<MatrixXd>(random_symmetric(n)).householderQ();
    const MatrixXd a = q * values.asDiagonal() * q.transpose();
    return (a + a.transpose()) / 2;
}

struct Family {
    const char* name;
    MatrixXd (*make)(int n);
};
const Family s_families[] = {
    {"random", [](int n) { return random_symmetric(n); }},
    {"hilbert",
     [](int n) -> MatrixXd {
         return MatrixXd::NullaryExpr(n, n, [](Eigen::Index i, Eigen::Index j) { return 1.0 / double(i + j + 1); });
     }},
    {"graded",
     [](int n) -> MatrixXd {
         const VectorXd s =
             VectorXd::NullaryExpr(n, [n](Eigen::Index i) { return std::pow(10.0, -12.0 * double(i) / n); });
         return s.asDiagonal() * random_symmetric(n) * s.asDiagonal();
     }},
    {"graded_the_other_way",
     [](int n) -> MatrixXd {
         const VectorXd s =
             VectorXd::NullaryExpr(n, [n](Eigen::Index i) { return std::pow(10.0, 12.0 * double(i) / n); });
         return s.asDiagonal() * random_symmetric(n) * s.asDiagonal();
     }},
    {"clustered",
     [](int n) {
         return with_eigenvalues(
             VectorXd::NullaryExpr(n, [](Eigen::Index i) { return double(i % 3) - 1 + 1e-13 * double(i); }));
     }},
    {"rank_one", [](int n) -> MatrixXd { return MatrixXd::Ones(n, n); }},
    {"zero", [](int n) -> MatrixXd { return MatrixXd::Zero(n, n); }},
    {"second_difference",
     [](int n) -> MatrixXd {
         return MatrixXd::NullaryExpr(n, n, [](Eigen::Index i, Eigen::Index j) {
             return i == j ? 2.0 : std::abs(i - j) == 1 ? -1.0 : 0.0;
         });
     }},
    {"blocks",
     [](int n) -> MatrixXd { // rows with nothing before them in the middle of the matrix
         const MatrixXd a = random_symmetric(n);
         return MatrixXd::NullaryExpr(n, n,
                                      [&](Eigen::Index i, Eigen::Index j) { return i / 5 == j / 5 ? a(i, j) : 0.0; });
     }},
    {"huge", [](int n) -> MatrixXd { return random_symmetric(n) * 1e150; }},
    {"tiny", [](int n) -> MatrixXd { return random_symmetric(n) * 1e-150; }},
};

TEST(EigenSymmetric, DecomposesEveryKindOfMatrix)
{
    for (const Family& family : s_families)
        for (const int n : {1, 2, 3, 4, 7, 8, 9, 16, 17, 24, 31, 64, 65, 67, 96, 97, 128, 193}) {
            SCOPED_TRACE(testing::Message() << family.name << " n=" << n);
            const MatrixXd a = family.make(n);
            const Result r(a);
            ASSERT_EQ(r.status, Status::success);
            EXPECT_EQ(a, family.make(n));
            const double bound = 10 * n * s_epsilon, norm = a.norm();
            EXPECT_LE((a * r.vectors - r.vectors * r.values.asDiagonal()).norm(), bound * norm);
            EXPECT_LE((r.vectors.transpose() * r.vectors - MatrixXd::Identity(n, n)).norm(), bound);
            EXPECT_TRUE(std::is_sorted(r.values.begin(), r.values.end(), std::greater<>()));
            EXPECT_EQ(r.positive_count, (r.values.array() > 0).count());
            const VectorXd expected = Eigen::SelfAdjointEigenSolver<MatrixXd>(a).eigenvalues().reverse();
            EXPECT_LE((r.values - expected).cwiseAbs().maxCoeff(), bound * norm);
        }
}

TEST(EigenSymmetric, MatchesPublishedValues) // mpmath, 18 digits
{
    struct Case {
        MatrixXd a;
        std::vector<double> values;
    };
    const Case cases[] = {
        {s_families[1].make(3), {1.40831892712365396, 0.122327065853905847, 0.00268734035577352923}},
        {MatrixXd{{4, 1, 2}, {1, 3, 0}, {2, 0, 5}}, {6.66907908828228840, 3.47602360291813403, 1.85489730879957757}},
        {MatrixXd{{10, 7, 8, 7}, {7, 5, 6, 5}, {8, 6, 10, 9}, {7, 5, 9, 10}},
         {30.2886853458021254, 3.85805745594495085, 0.843107149855031841, 0.0101500483978918681}},
    };
    for (const Case& c : cases) {
        const Result r(c.a);
        ASSERT_EQ(r.positive_count, static_cast<int>(c.values.size()));
        for (std::size_t k = 0; k < c.values.size(); ++k)
            EXPECT_NEAR(r.values[static_cast<Eigen::Index>(k)], c.values[k], 1e-15 * c.values[0]);
    }
}

TEST(EigenSymmetric, SortsADiagonalMatrixAndKeepsEqualValuesInOrder)
{
    struct Case {
        std::vector<double> diagonal;
        std::vector<int> order;
        int positive_count;
    };
    std::vector<double> long_diagonal(120);
    std::vector<int> long_order;
    for (int i = 0; i < 120; ++i)
        long_diagonal[static_cast<std::size_t>(i)] = i % 4;
    for (int value = 3; value >= 0; --value)
        for (int i = value; i < 120; i += 4)
            long_order.push_back(i);
    const Case cases[] = {
        {{1, 3, 2}, {1, 2, 0}, 3},       {{0, -1}, {0, 1}, 0}, {{2, 5, 2, 5}, {1, 3, 0, 2}, 4}, {{-7}, {0}, 0},
        {{5e-324, 1e-320}, {1, 0}, 1}, // the smallest numbers count as zero
        {long_diagonal, long_order, 90},
    };
    for (const Case& c : cases) {
        const auto n = static_cast<Eigen::Index>(c.diagonal.size());
        SCOPED_TRACE(testing::Message() << "n=" << n << " first " << c.diagonal[0]);
        const Result r(MatrixXd(Eigen::Map<const VectorXd>(c.diagonal.data(), n).asDiagonal()));
        EXPECT_EQ(r.positive_count, c.positive_count);
        for (Eigen::Index k = 0; k < n; ++k) {
            const int from = c.order[static_cast<std::size_t>(k)];
            EXPECT_EQ(r.values[k], c.diagonal[static_cast<std::size_t>(from)]);
            EXPECT_EQ(r.vectors.col(k).cwiseAbs(), VectorXd::Unit(n, from));
        }
    }
}

TEST(EigenSymmetric, HasTheSameBitsAtEveryLevel)
{
    for (const int n : {3, 8, 16, 40, 64, 65, 175}) {
        const MatrixXd a = random_symmetric(n, 7);
        const qmml::platform::ForcedLevel baseline(qmml::platform::Level::baseline);
        const Result expected(a);
        for (const auto level : qmml::platform::supported_levels()) {
            const qmml::platform::ForcedLevel forced(level);
            EXPECT_TRUE(Result(a) == expected) << n << " level " << static_cast<int>(level);
        }
    }
}

TEST(EigenSymmetric, ReportsALackOfMemory)
{
    for (const int n : {16, 40, 120}) {
        const MatrixXd a = random_symmetric(n);
        long allocations = 0;
        for (bool failed = true; failed; ++allocations) {
            qmml::fail_allocation(allocations + 1);
            const Result r(a);
            qmml::fail_allocation(0);
            failed = r.status != Status::success;
            EXPECT_EQ(r.status, failed ? Status::out_of_memory : Status::success);
            EXPECT_EQ(r.positive_count == 0, failed);
        }
        EXPECT_EQ(allocations == 1, n == 16) << "small matrices need none, n=" << n;
    }
}

TEST(EigenSymmetric, AsksForABreakBeforeEachRow)
{
    for (const int n : {2, 16, 40, 120}) {
        const MatrixXd a = random_symmetric(n) + 100 * MatrixXd::Identity(n, n);
        for (const long check : {1, n - 1, n}) {
            qmml::request_break(check);
            const Result r(a);
            qmml::request_break(0);
            EXPECT_EQ(r.status, check < n ? Status::stopped : Status::success) << n << " " << check;
            EXPECT_EQ(r.positive_count == 0, check < n);
        }
    }
}

TEST(EigenSymmetric, EndsOnNumbersThatAreNone)
{
    const double infinity = std::numeric_limits<double>::infinity(), nan = std::nan("");
    for (const int n : {1, 2, 5, 16, 17, 70, 130})
        for (const double bad : {nan, infinity, -infinity, 1.7e308})
            for (const auto& [row, column] : {std::pair{0, 0}, {n - 1, 0}, {n / 2, n / 2}}) {
                MatrixXd a = random_symmetric(n);
                a(row, column) = a(column, row) = bad;
                const auto size = static_cast<std::size_t>(n);
                std::vector<double> values(size + 1, 5), vectors(size * size + 1, 5);
                int positive_count = -1;
                const Status status = eigen_symmetric(a.data(), n, values.data(), vectors.data(), positive_count);
                EXPECT_TRUE(status == Status::success || status == Status::singular);
                EXPECT_GE(positive_count, 0);
                EXPECT_EQ(values.back(), 5);
                EXPECT_EQ(vectors.back(), 5);
            }
}

TEST(EigenSymmetric, HasNothingToDoForAnEmptyMatrix)
{
    for (const int n : {0, -1, std::numeric_limits<int>::min()}) {
        int positive_count = -1;
        EXPECT_EQ(eigen_symmetric(nullptr, n, nullptr, nullptr, positive_count), Status::success);
        EXPECT_EQ(positive_count, 0);
    }
}

// Sweeps over changing ranges, up and down, quarter turns among them, against rotations applied one by one.
TEST(RotationQueue, AppliesEverySweepInOrder)
{
    using qmml::matrix::RotationQueue;
    for (const auto level : qmml::platform::supported_levels())
        for (const bool up : {false, true})
            for (const auto& [rows, columns, sweeps] :
                 {std::tuple{1, 2, 3}, {16, 5, 8}, {37, 12, 70}, {48, 40, 33}, {5, 3, 64}, {19, 1, 0}}) {
                SCOPED_TRACE(testing::Message() << rows << " x " << columns << (up ? " up" : " down"));
                const qmml::platform::ForcedLevel forced(level);
                std::mt19937 generator(3);
                const int ld = rows + 3;
                MatrixXd expected = random_symmetric(std::max(ld, columns)).topLeftCorner(ld, columns);
                MatrixXd z = expected;
                RotationQueue queue;
                ASSERT_TRUE(queue.attach(z.data(), rows, ld, columns,
                                         up ? RotationQueue::Direction::up : RotationQueue::Direction::down));
                for (int k = 0; k < sweeps; ++k) {
                    const int x = static_cast<int>(generator() % static_cast<unsigned>(columns - 1));
                    const int y = static_cast<int>(generator() % static_cast<unsigned>(columns - 1));
                    const int first = std::min(x, y), last = std::max(x, y);
                    queue.begin(first, last);
                    for (int i = up ? first : last; up ? i <= last : i >= first; i += up ? 1 : -1) {
                        const double random = static_cast<double>(generator());
                        const double cosines[] = {std::cos(random), -std::cos(random), 1e-8, 0, 1};
                        const double c = cosines[generator() % 5], s = std::sqrt(1 - c * c);
                        queue.set(i, c, s);
                        const VectorXd left = expected.col(i).head(rows), right = expected.col(i + 1).head(rows);
                        expected.col(i).head(rows) = c * left - s * right;
                        expected.col(i + 1).head(rows) = s * left + c * right;
                    }
                }
                queue.flush();
                EXPECT_LE((z - expected).cwiseAbs().maxCoeff(), 1e-13);
                EXPECT_EQ(z.bottomRows(ld - rows), expected.bottomRows(ld - rows));
            }
}

} // namespace
