// The frame of the raw entry points: results, statuses, null arrays, and callers that have unmasked traps.

#include "core/break_check.h"
#include "core/memory.h"

#include <cfenv>
#include <cmath>
#include <functional>
#include <gtest/gtest.h>
#include <limits>
#include <qmml/core.h>
#include <qmml/matrix.h>
#include <vector>

namespace {

class Traps {
public:
    Traps() { ::feenableexcept(FE_INVALID | FE_DIVBYZERO | FE_OVERFLOW); }
    ~Traps()
    {
        ::fedisableexcept(FE_ALL_EXCEPT);
        std::feclearexcept(FE_ALL_EXCEPT);
    }
};

TEST(RawEntry, ReportsSuccessAndFailure)
{
    double a[] = {2, 1, 1, 1}, singular[] = {1, 2, 2, 4}, det = 9, rank = 9;
    int status = 9;
    EXPECT_EQ(ComputeDeterminant__(a, 2, &det, &status), 0);
    EXPECT_EQ(status, 0);
    EXPECT_EQ(det, 1);
    EXPECT_EQ(MatrixInverse__(a, 2, &status), 0);
    EXPECT_EQ(a[0], 1);
    EXPECT_EQ(a[3], 2);
    EXPECT_EQ(ComputeDeterminant__(singular, 2, &det, &status), 1);
    EXPECT_EQ(status, 1);
    EXPECT_EQ(det, 0);
    EXPECT_EQ(RankOfMatrix__(singular, 2, 2, &rank, &status), 0);
    EXPECT_EQ(rank, 1);
    const double constant[] = {1, 1, 1, 1, 2, 3};
    double r[4];
    int failed = -5;
    EXPECT_EQ(ComputeCorrelationMatrix__(constant, 3, 2, r, 1, &status, &failed), 1);
    EXPECT_EQ(status, 3);
    EXPECT_EQ(failed, 1);
}

TEST(RawEntry, StopsWhenTheBreakCheckSaysSo)
{
    double a[] = {2, 1, 1, 1}, out[4];
    int status = 0;
    qmml::request_break(1);
    EXPECT_EQ(MatrixInverse__(a, 2, &status), 1);
    EXPECT_EQ(status, 99);
    qmml::request_break(1);
    EXPECT_EQ(QelMatrixCholeskyDecomposition(a, out, 2, 2, 2, 2), 0);
    EXPECT_EQ(QMMLSetLastError(0), 12559);
    qmml::request_break(0);
}

TEST(RawEntry, SurvivesArraysThatAreNotThere)
{
    double a[4] = {1, 0, 0, 1}, x = 9, det = 9;
    int status = 9;
    EXPECT_EQ(MatrixInverse__(nullptr, 2, &status), 1);
    EXPECT_EQ(status, 2);
    EXPECT_EQ(ComputeMeans__(a, 2, 2, nullptr, &status), 1);
    EXPECT_EQ(SingularValueDecomposition__(a, 2, 2, &x, nullptr, &status), 1);
    EXPECT_EQ(ComputeDeterminant__(a, 2'000'000'000, &det, &status), 1);
    EXPECT_EQ(status, 2);
    EXPECT_EQ(det, 0);
    EXPECT_EQ(MatrixMultiply__(nullptr, 2, 2, nullptr, 2, 3, nullptr, 2, 2, &status), 1);
    EXPECT_EQ(status, 1); // the shapes are looked at first
    EXPECT_EQ(MatrixInverse__(nullptr, 0, &status), 0);
    EXPECT_EQ(status, 0);
    EXPECT_EQ(ComputeDeterminant__(a, 2, nullptr, nullptr), 0);
}

// With traps unmasked a fault makes the call fail; with traps masked the same input is computed as it may be.
TEST(RawEntry, AFaultThatTheCallerUnmaskedFails)
{
    const double huge[] = {1e200, 1e200}, far[] = {1e308, -1e308, 1e308, 1, 2, 3};
    double out[4] = {9, 9, 9, 9}, scalar = 9;
    int status = 9, failed = 9;
    EXPECT_EQ(QelMatrixSumOfSquares(huge, &scalar, 2, 1), 1);
    EXPECT_TRUE(std::isinf(scalar));
    scalar = 9;
    QMMLSetLastError(0);
    int raw, array;
    {
        const Traps traps;
        raw = ComputeCorrelationMatrix__(far, 3, 2, out, 1, &status, &failed);
        array = QelMatrixSumOfSquares(huge, &scalar, 2, 1);
    }
    EXPECT_EQ(raw, 1);
    EXPECT_EQ(status, 99);
    for (const double r : out)
        EXPECT_EQ(r, 9);
    EXPECT_EQ(array, 0);
    EXPECT_EQ(scalar, 9);
    EXPECT_EQ(QMMLGetLastError(), 0);
    const Traps traps;
    EXPECT_EQ(QelMatrixCorrelations(far, out, 3, 2, 2, 2, 1), 0);
    EXPECT_EQ(QMMLGetLastError(), 12559);
}

// What the vector unit computes along with what counts must not look like a fault of the data.
TEST(RawEntry, CleanDataRaiseNoFault)
{
    for (int c : {1, 2, 3, 7, 8, 9, 17})
        for (int r : {2, 3, 50, 1001}) {
            SCOPED_TRACE(testing::Message() << r << " x " << c);
            std::vector<double> data(static_cast<std::size_t>(r * c)), out(static_cast<std::size_t>(c * c));
            for (std::size_t i = 0; i < data.size(); ++i) // from 0.001 to 1e8, and zeros
                data[i] = i % 7 == 0 ? 0 : std::pow(10, static_cast<double>(i * 5 % 12) - 3) + static_cast<double>(i);
            int status = 9, failed = 9;
            const Traps traps;
            EXPECT_EQ(SumsOfSquaredDeviations__(data.data(), r, c, out.data(), &status), 0);
            EXPECT_EQ(CrossProductsOfDeviations__(data.data(), r, c, out.data(), 1, &status), 0);
            EXPECT_EQ(CrossProductsOfDeviations__(data.data(), r, c, out.data(), 0, &status), 0);
            EXPECT_EQ(ComputeMeans__(data.data(), r, c, out.data(), &status), 0);
            for (int centred : {0, 1})
                EXPECT_EQ(ComputeCorrelationMatrix__(data.data(), r, c, out.data(), centred, &status, &failed), 0);
        }
    double infinite[] = {std::numeric_limits<double>::infinity()};
    int status = 9;
    const Traps traps;
    EXPECT_EQ(SweepingOnMatrix__(infinite, 1, 0, 0, 1, &status), 0);
}

TEST(SingularValues, AreNotNegativeNearTheLeastNumber)
{
    const double unit = std::numeric_limits<double>::denorm_min(), a[] = {24 * unit, 3, 3};
    double w[3];
    int status;
    EXPECT_EQ(SingularValuesForMatrix__(a, 1, 3, w, &status), 0);
    EXPECT_GT(w[2], -16 * unit);
}

TEST(RawEntry, SmallOrdersTakeNothingFromTheHeap)
{
    constexpr int n = 16;
    double a[n * n], b[n * n], v[n * n], w[n], scalar;
    int status, count;
    const auto fill = [&] {
        for (int i = 0; i < n * n; ++i)
            b[i] = a[i] = i / n == i % n ? 20 : 1.0 / (1 + i / n + i % n); // symmetric, positive definite
    };
    const std::function<int()> calls[] = {
        [&] { return ComputeDeterminant__(a, n, &scalar, &status); },
        [&] { return MatrixInverse__(a, n, &status); },
        [&] { return MatrixMultiply__(v, n, n, a, n, n, b, n, n, &status); },
        [&] { return SolveLinearSetOfEquations__(a, b, n, n, &status); },
        [&] { return EigenValuesAndVectors__(a, n, w, v, &count, &status); },
        [&] { return SingularValueDecomposition__(a, n, n, w, v, &status); },
        [&] { return SingularValuesForMatrix__(a, n, n, w, &status); },
        [&] { return RankOfMatrix__(a, n, n, &scalar, &status); },
        [&] { return GeneralOrPseudoInverse__(a, n, n, v, &status); },
        [&] { return SweepingOnMatrix__(a, n, 0, n - 1, 1, &status); },
        [&] { return GramSchmidthOrthonormal__(a, n, n, &status); },
        [&] { return CholeskyDecomposition__(a, n, &status); },
        [&] { return SumsOfSquaredDeviations__(a, n, n, w, &status); },
        [&] { return ComputeMeans__(a, n, n, w, &status); },
        [&] { return CrossProductsOfDeviations__(a, n, n, v, 1, &status); },
        [&] { return ComputeCorrelationMatrix__(a, n, n, v, 1, &status, &count); },
        [&] { return !QelMatrixTranspose(a, a, n, n, n, n); },
        [&] { return !QelMatrixMultiply(a, b, a, n, n, n, n, n, n); },
        [&] { return !QelMatrixSolve(a, b, b, n, n, n, n, n, n); },
        [&] { return !QelMatrixEigenValues(a, w, &scalar, n, n, n); },
    };
    for (const auto& call : calls) {
        fill();
        qmml::fail_allocation(1);
        EXPECT_EQ(call(), 0) << &call - calls;
    }
    qmml::fail_allocation(0);
}

TEST(RawEntry, LeavesNoFlagRaisedAndTheMasksAsTheyWere)
{
    double third[] = {3, 1, 0, 7};
    int status;
    std::feraiseexcept(FE_ALL_EXCEPT);
    EXPECT_EQ(MatrixInverse__(third, 2, &status), 0);
    EXPECT_EQ(std::fetestexcept(FE_ALL_EXCEPT), 0);
    const Traps traps;
    EXPECT_EQ(MatrixInverse__(third, 2, &status), 0);
    EXPECT_EQ(std::fetestexcept(FE_ALL_EXCEPT), 0);
    EXPECT_EQ(::fegetexcept(), FE_INVALID | FE_DIVBYZERO | FE_OVERFLOW);
}

} // namespace
