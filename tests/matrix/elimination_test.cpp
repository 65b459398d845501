#include "matrix/elimination.h"

#include "core/break_check.h"
#include "core/memory.h"
#include "platform/levels.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <bit>
#include <cmath>
#include <cstdint>
#include <limits>
#include <numeric>
#include <random>
#include <utility>
#include <vector>

namespace {

using qmml::matrix::Status;
using Matrix = std::vector<double>; // column-major

constexpr double s_nan = std::numeric_limits<double>::quiet_NaN();
constexpr double s_infinity = std::numeric_limits<double>::infinity();

std::size_t index(int i, int j, int n)
{
    return static_cast<std::size_t>(j) * static_cast<std::size_t>(n) + static_cast<std::size_t>(i);
}

// The elimination element by element: what every level has to give, bit for bit. `stop` is the step whose check says
// stop.
struct Plain {
    int n;
    Matrix a;
    Status status = Status::success;
    std::vector<double> pivots = {}; // with the sign of their exchange

    double& at(int i, int j) { return a[index(i, j, n)]; }

    void swap_rows(int p, int q)
    {
        for (int j = 0; j < n; ++j)
            std::swap(at(p, j), at(q, j));
    }
    void swap_columns(int p, int q)
    {
        for (int i = 0; i < n; ++i)
            std::swap(at(i, p), at(i, q));
    }

    void invert(int stop = -1)
    {
        std::vector<int> used(a.size() + 1, 0), rows, columns;
        for (int step = 0; step < n; ++step) {
            if (step == stop) {
                status = Status::stopped;
                return;
            }
            int r = -1, c = -1;
            double greatest = 0.0;
            for (int i = 0; i < n; ++i)
                for (int j = 0; j < n; ++j)
                    if (!used[static_cast<std::size_t>(i)] && !used[static_cast<std::size_t>(j)] &&
                        std::fabs(at(i, j)) >= greatest) {
                        greatest = std::fabs(at(i, j));
                        r = i;
                        c = j;
                    }
            status = Status::singular;
            if (r < 0)
                return;
            used[static_cast<std::size_t>(c)] = 1;
            if (r != c)
                swap_rows(r, c);
            rows.push_back(r);
            columns.push_back(c);
            const double pivot = std::exchange(at(c, c), 1.0);
            if (!(std::fabs(pivot) >= 1e-25))
                return;
            status = Status::success;
            pivots.push_back(r != c ? -pivot : pivot);
            for (int j = 0; j < n; ++j)
                at(c, j) /= pivot;
            for (int i = 0; i < n; ++i) {
                if (i == c)
                    continue;
                const double multiple = std::exchange(at(i, c), 0.0);
                for (int j = 0; j < n; ++j)
                    at(i, j) -= multiple * at(c, j);
            }
        }
        for (std::size_t step = rows.size(); step-- > 0;)
            if (rows[step] != columns[step])
                swap_columns(rows[step], columns[step]);
    }

    // In extended precision; limits met to within a few of its units are not for this.
    Status determinant(double& value) const
    {
        value = 0.0;
        long double sum = 0.0L;
        bool negative = false;
        for (const double p : pivots) {
            sum += std::log(std::fabs(static_cast<long double>(p)));
            negative ^= p < 0.0;
            if (!(std::log(1e-25L) <= sum))
                return Status::singular;
        }
        if (status != Status::success)
            return status;
        if (sum > std::log(1e150L))
            return Status::out_of_range;
        value = static_cast<double>(negative ? -std::exp(sum) : std::exp(sum));
        return status;
    }
};

// NaNs are all alike.
std::vector<std::uint64_t> bits(const Matrix& a)
{
    std::vector<std::uint64_t> result(a.size());
    std::transform(a.begin(), a.end(), result.begin(),
                   [](double x) { return std::bit_cast<std::uint64_t>(std::isnan(x) ? s_nan : x); });
    return result;
}

struct Kind {
    const char* name;
    double (*element)(int i, int j, std::mt19937_64& random);
};

double uniform(std::mt19937_64& random)
{
    return std::uniform_real_distribution<double>(-1.0, 1.0)(random);
}
double integer(std::mt19937_64& random, int limit)
{
    return std::uniform_int_distribution<int>(-limit, limit)(random);
}

using Random = std::mt19937_64;
constexpr Kind s_kinds[] = {
    {"uniform", [](int, int, Random& random) { return uniform(random); }},
    {"normal", [](int, int, Random& random) { return std::normal_distribution<double>()(random); }},
    {"dominant", [](int i, int j, Random& random) { return uniform(random) + (i == j ? 50.0 : 0.0); }},
    {"signs", [](int, int, Random& random) { return random() % 2 == 0 ? -1.0 : 1.0; }},
    {"small integers", [](int, int, Random& random) { return integer(random, 2); }},
    {"identity", [](int i, int j, Random&) { return i == j ? 1.0 : 0.0; }},
    {"reversal",
     [](int i, int j, Random& random) { return i == 6 - j        ? 1.0
                                               : i > 6 && i == j ? integer(random, 1) + 2.0
                                                                 : 0.0; }},
    {"sparse", [](int i, int j, Random& random) { return random() % 8 == 0 || i == j ? integer(random, 3) : -0.0; }},
    {"Hilbert", [](int i, int j, Random&) { return 1.0 / (i + j + 1); }},
    {"graded", [](int i, int j, Random& random) { return std::exp2(-(i + 2.0 * j) / 3.0) * uniform(random); }},
    {"huge", [](int, int, Random& random) { return 1e300 * uniform(random); }},
    {"tiny", [](int, int, Random& random) { return 1e-24 * uniform(random); }},
    {"one NaN", [](int i, int j, Random& random) { return i == 1 && j == 2 ? s_nan : uniform(random); }},
    {"infinities", [](int i, int j, Random& random) { return i == j && i % 5 == 2 ? s_infinity : uniform(random); }},
    {"zeros", [](int, int, Random&) { return 0.0; }},
    {"NaNs", [](int, int, Random&) { return s_nan; }},
};

Matrix matrix_of(const Kind& kind, int n, unsigned seed)
{
    Random random(seed);
    Matrix a;
    for (int j = 0; j < n; ++j)
        for (int i = 0; i < n; ++i)
            a.push_back(kind.element(i, j, random));
    return a;
}

void expect_plain(const Matrix& a, int n)
{
    Plain plain{n, a};
    plain.invert();
    double determinant_expected = 0.0;
    const Status status_expected = plain.determinant(determinant_expected);
    for (const auto level : qmml::platform::supported_levels()) {
        SCOPED_TRACE(static_cast<int>(level));
        const qmml::platform::ForcedLevel forced(level);
        Matrix inverse = a;
        const Matrix behind(16, 7.0); // what follows the matrix stays
        inverse.insert(inverse.end(), behind.begin(), behind.end());
        EXPECT_EQ(qmml::matrix::invert_in_place(inverse.data(), n), plain.status);
        EXPECT_TRUE(std::equal(behind.begin(), behind.end(), inverse.end() - 16));
        inverse.resize(a.size());
        EXPECT_EQ(bits(inverse), bits(plain.a));
        double value = 7.0;
        EXPECT_EQ(qmml::matrix::determinant(a.data(), n, value), status_expected);
        EXPECT_NEAR(value, determinant_expected, 3e-16 * std::fabs(determinant_expected));
    }
}

TEST(Elimination, HasTheBitsOfThePlainLoopOnEveryLevel)
{
    for (const auto& kind : s_kinds)
        for (int n = 1; n <= 140; n += n < 20 ? 1 : n < 64 ? 7 : 19) {
            SCOPED_TRACE(testing::Message() << kind.name << ", n = " << n);
            expect_plain(matrix_of(kind, n, static_cast<unsigned>(n)), n);
        }
}

// Where a determinant takes panels too, and leaves them when few enough rows are left. The scales of the rows keep it
// in range.
TEST(Elimination, HasThePlainBitsOnLargeMatrices)
{
    const Kind kinds[] = {
        {"uniform", [](int i, int, Random& random) { return std::exp2(-0.0099 * i) * uniform(random); }},
        {"signs", [](int i, int, Random& random) { return std::ldexp(random() % 2 == 0 ? -1.0 : 1.0, -(i / 67)); }},
    };
    for (const auto& kind : kinds) {
        SCOPED_TRACE(kind.name);
        const int n = 401;
        const Matrix a = matrix_of(kind, n, 1);
        double value = 0.0;
        EXPECT_EQ(qmml::matrix::determinant(a.data(), n, value), Status::success);
        expect_plain(a, n);
    }
}

TEST(Elimination, HasThePlainBitsOnManySmallIntegerMatrices)
{
    Random random(5);
    for (int n = 2; n <= 5; ++n)
        for (int round = 0; round < 300; ++round) {
            Matrix a(static_cast<std::size_t>(n * n));
            for (double& x : a)
                x = integer(random, 1 + round % 3);
            SCOPED_TRACE(testing::Message() << "n = " << n << ", round " << round);
            expect_plain(a, n);
        }
}

// By the sum over all permutations.
long exact_determinant(const Matrix& a, int n)
{
    std::vector<std::size_t> order(static_cast<std::size_t>(n));
    std::iota(order.begin(), order.end(), 0u);
    long sum = 0;
    do {
        long term = 1;
        for (std::size_t i = 0; i < order.size(); ++i) {
            term *= static_cast<long>(a[order[i] * order.size() + i]);
            for (std::size_t k = 0; k < i; ++k)
                term = order[k] > order[i] ? -term : term;
        }
        sum += term;
    } while (std::next_permutation(order.begin(), order.end()));
    return sum;
}

TEST(Determinant, IsThatOfTheIntegerMatrix)
{
    Random random(7);
    for (int n = 1; n <= 6; ++n)
        for (int round = 0; round < 50; ++round) {
            Matrix a(static_cast<std::size_t>(n * n));
            for (double& x : a)
                x = integer(random, 9);
            const auto exact = static_cast<double>(exact_determinant(a, n));
            double value = 0.0;
            const Status status = qmml::matrix::determinant(a.data(), n, value);
            // A singular one may end with what rounding left.
            EXPECT_EQ(status == Status::singular || std::fabs(value) < 1e-9, exact == 0.0);
            EXPECT_NEAR(value, exact, 1e-13 * std::fabs(exact) + 1e-9);
        }
}

Matrix diagonal(const std::vector<double>& elements)
{
    Matrix a(elements.size() * elements.size());
    for (std::size_t i = 0; i < elements.size(); ++i)
        a[i * elements.size() + i] = elements[i];
    return a;
}

TEST(Determinant, OfADiagonalMatrixHasItsLimits)
{
    const struct {
        std::vector<double> elements;
        Status status;
        double value;
    } cases[] = {
        {{}, Status::success, 1.0},
        {{0.0}, Status::singular, 0.0},
        {{1e-26}, Status::singular, 0.0},
        {{1e-25}, Status::success, 1e-25},
        {{1e-10, 1e-10}, Status::success, 1e-10 * 1e-10},
        {{1e-10, 1e-10, 1e-10}, Status::singular, 0.0},
        {{1e-10, 1e20, 1e-10}, Status::success, 1.0}, // the greatest pivots come first
        {{1e75, 1e74}, Status::success, 1e149},
        {{1e75, -1e74}, Status::success, -1e149},
        {{1e150}, Status::success, 1e150},
        {{1e100, 1e100}, Status::out_of_range, 0.0},
        {{1e200, 1e200, 1e-20, 1e-20, -1e-300}, Status::singular, 0.0},
        {{1e300, 1e300, 1e-24, 1e-24, 1e-24}, Status::out_of_range, 0.0},
        {{s_infinity, 1.0}, Status::out_of_range, 0.0},
        {{s_nan}, Status::singular, 0.0},
        {{0x1p-1, 0x1p-20, 3.0, -0x1p30}, Status::success, -3.0 * 0x1p9},
        {{0x1p700, 0x1p700, 0x1p-80, 0x1p-80, 0x1p-80, 0x1p-80, 0x1p-80, 0x1p-80, 0x1p-80, 0x1p-80, 0x1p-80, 0x1p-80,
          0x1p-80, -0x1p-80},
         Status::success,
         -0x1p440},
        {{0x1p1000, 0x1p-80, 0x1p-80, 0x1p-80, 0x1p-80, 0x1p-80, 0x1p-80, 0x1p-80, 0x1p-80, 0x1p-80, 0x1p-80, 0x1p-80,
          0x1p-80, 0x1p-80, 0x1p-80},
         Status::singular,
         0.0},
        {{0x1p300, 0x1p198, 0x1p0}, Status::success, 0x1p498},
        {{0x1p300, 0x1p199, 0x1p0}, Status::out_of_range, 0.0},
    };
    for (const auto& c : cases) {
        double value = 7.0;
        const Matrix a = diagonal(c.elements);
        EXPECT_EQ(qmml::matrix::determinant(a.data(), static_cast<int>(c.elements.size()), value), c.status);
        EXPECT_DOUBLE_EQ(value, c.value);
    }
}

TEST(Determinant, OfAPermutationIsItsSign)
{
    for (int n = 2; n <= 100; n = n < 6 ? n + 1 : n * 2)
        for (int p = 0; p + 1 < n; ++p) {
            Matrix a = matrix_of(s_kinds[5], n, 0);
            const auto size = static_cast<std::size_t>(n), row = static_cast<std::size_t>(p);
            std::swap_ranges(a.data() + row * size, a.data() + (row + 1) * size, a.data() + (size - 1) * size);
            double value = 0.0;
            EXPECT_EQ(qmml::matrix::determinant(a.data(), n, value), Status::success);
            EXPECT_EQ(value, -1.0);
        }
}

TEST(Inverse, TimesTheMatrixIsTheIdentity)
{
    for (const int n : {1, 2, 7, 16, 17, 64, 65, 100, 200}) {
        const Matrix a = matrix_of(s_kinds[0], n, 3);
        Matrix inverse = a;
        ASSERT_EQ(qmml::matrix::invert_in_place(inverse.data(), n), Status::success);
        for (int j = 0; j < n; ++j)
            for (int i = 0; i < n; ++i) {
                double sum = 0.0, size = 0.0;
                for (int k = 0; k < n; ++k) {
                    const double term = a[index(i, k, n)] * inverse[index(k, j, n)];
                    sum += term;
                    size += std::fabs(term);
                }
                ASSERT_NEAR(sum, i == j ? 1.0 : 0.0, 1e-15 * n * std::max(size, 1.0)) << n;
            }
    }
}

TEST(Elimination, LeavesWhatTheStepsBeforeTheStopMade)
{
    for (const int n : {3, 20, 100}) {
        const Matrix a = matrix_of(s_kinds[0], n, 1);
        for (int stop = 0; stop < n; stop += 1 + n / 8) {
            SCOPED_TRACE(testing::Message() << "n = " << n << ", stop at " << stop);
            Plain plain{n, a};
            plain.invert(stop);
            Matrix inverse = a;
            qmml::request_break(stop + 1);
            EXPECT_EQ(qmml::matrix::invert_in_place(inverse.data(), n), Status::stopped);
            EXPECT_EQ(bits(inverse), bits(plain.a));
            double value = 7.0;
            qmml::request_break(stop + 1);
            EXPECT_EQ(qmml::matrix::determinant(a.data(), n, value), Status::stopped);
            EXPECT_EQ(value, 0.0);
        }
    }
    qmml::request_break(0);
}

TEST(Elimination, WithoutMemoryChangesNothing)
{
    const int n = 20;
    const Matrix a = matrix_of(s_kinds[0], n, 1);
    bool failed = true;
    for (long k = 1; failed; ++k) {
        Matrix inverse = a;
        qmml::fail_allocation(k);
        const Status status = qmml::matrix::invert_in_place(inverse.data(), n);
        failed = status == Status::out_of_memory;
        EXPECT_EQ(inverse == a, failed);
        EXPECT_TRUE(failed || k > 1);

        double value = 7.0;
        qmml::fail_allocation(k);
        EXPECT_EQ(qmml::matrix::determinant(a.data(), n, value), status);
        EXPECT_EQ(value == 0.0, failed);
    }
    qmml::fail_allocation(0);
}

} // namespace
