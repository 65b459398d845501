// The frame of the raw entry points: results, statuses, null arrays, and callers that have unmasked traps.

#include "core/break_check.h"

#include <cfenv>
#include <cmath>
#include <gtest/gtest.h>
#include <limits>
#include <qmml/core.h>
#include <qmml/matrix.h>

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

constexpr double s_nan = std::numeric_limits<double>::quiet_NaN();

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

TEST(RawEntry, SurvivesNullArrays)
{
    double a[4] = {1, 0, 0, 1}, x = 9;
    int status = 9;
    EXPECT_EQ(MatrixInverse__(nullptr, 2, &status), 1);
    EXPECT_EQ(ComputeMeans__(a, 2, 2, nullptr, &status), 1);
    EXPECT_EQ(SingularValueDecomposition__(a, 2, 2, &x, nullptr, &status), 1);
    EXPECT_EQ(status, 9);
    EXPECT_EQ(MatrixInverse__(nullptr, 0, &status), 0);
    EXPECT_EQ(status, 0);
    EXPECT_EQ(ComputeDeterminant__(a, 2, nullptr, nullptr), 0);
}

// With traps unmasked a fault makes the call fail; with traps masked the same input is computed as it may be.
TEST(RawEntry, AFaultThatTheCallerUnmaskedFails)
{
    const double huge[] = {1e200, 1e200}, missing[] = {1, s_nan, 2, 3};
    double out[4] = {9, 9, 9, 9}, scalar = 9;
    int status = 9, failed = 9;
    EXPECT_EQ(QelMatrixSumOfSquares(huge, &scalar, 2, 1), 1);
    EXPECT_TRUE(std::isinf(scalar));
    scalar = 9;
    QMMLSetLastError(0);
    int raw, array, quiet;
    {
        const Traps traps;
        raw = MatrixMultiply__(out, 1, 1, huge, 1, 1, huge, 1, 1, &status);
        array = QelMatrixSumOfSquares(huge, &scalar, 2, 1);
        quiet = ComputeCorrelationMatrix__(missing, 2, 2, out, 1, &status, &failed); // a NaN alone is no fault
    }
    EXPECT_EQ(raw, 1);
    EXPECT_EQ(array, 0);
    EXPECT_EQ(scalar, 9);
    EXPECT_EQ(QMMLGetLastError(), 0);
    EXPECT_TRUE(quiet == 0 || status == 99);
}

TEST(RawEntry, LeavesNoFlagRaisedAndTheMasksAsTheyWere)
{
    double third[] = {3, 1, 0, 7};
    int status;
    const Traps traps;
    EXPECT_EQ(MatrixInverse__(third, 2, &status), 0);
    EXPECT_EQ(std::fetestexcept(FE_ALL_EXCEPT), 0);
    EXPECT_EQ(::fegetexcept(), FE_INVALID | FE_DIVBYZERO | FE_OVERFLOW);
}

} // namespace
