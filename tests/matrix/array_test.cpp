// The array functions: shape rules and their codes, which outputs stay untouched, blocks, aliasing.

#include "core/memory.h"

#include <algorithm>
#include <climits>
#include <cmath>
#include <functional>
#include <gtest/gtest.h>
#include <limits>
#include <qmml/core.h>
#include <qmml/matrix.h>
#include <vector>

namespace {

using Numbers = std::vector<double>;

constexpr double s_nan = std::numeric_limits<double>::quiet_NaN();
constexpr double s_untouched = -77;

// 3 x 2, 2 x 2, and an output that holds nothing but marks.
const double s_a[] = {1, 2, 3, 4, 5, 6}, s_square[] = {4, 2, 2, 3};
double s_out[64];

struct Failure {
    const char* name;
    int code;
    std::function<int()> call;
};

TEST(MatrixArrays, FailWithTheirCodesAndWriteNothing)
{
    double* const o = s_out;
    const double *const a = s_a, *const s = s_square;
    const Failure failures[] = {
        {"column length", 12546, [=] { return QelMatrixGetColumn(a, 1, o, 3, 2, 2); }},
        {"length before index", 12546, [=] { return QelMatrixGetColumn(a, 9, o, 3, 2, 2); }},
        {"column 0", 12547, [=] { return QelMatrixGetColumn(a, 0, o, 3, 2, 3); }},
        {"column 3 of 2", 12547, [=] { return QelMatrixSetColumn(o, 3, a, 3, 2, 3); }},
        {"row length", 12549, [=] { return QelMatrixGetRow(a, 1, o, 3, 2, 3); }},
        {"row 4 of 3", 12550, [=] { return QelMatrixSetRow(o, 4, a, 3, 2, 2); }},
        {"extract row", 12550, [=] { return QelMatrixExtract(a, 4, 9, 1, 1, o, 3, 2, 1, 1); }},
        {"extract column", 12547, [=] { return QelMatrixExtract(a, 0, -1, 1, 1, o, 3, 2, 1, 1); }},
        {"copy target row", 12550, [=] { return QelMatrixCopy(a, 1, 3, 1, 1, o, 5, 1, 3, 2, 4, 4); }},
        {"copy target column", 12547, [=] { return QelMatrixCopy(a, 1, 1, 1, 1, o, 4, 5, 3, 2, 4, 4); }},
        {"fill row", 12550, [=] { return QelMatrixFill(1, o, 3, 1, 1, 1, 2, 2); }},
        {"duplicate", 12551, [=] { return QelMatrixDuplicate(a, o, 3, 2, 2, 3); }},
        {"identity", 12555, [=] { return QelMatrixIdentity(o, 3, 2); }},
        {"beside", 12546, [=] { return QelMatrixCombineHoriz(a, s, o, 3, 2, 2, 2, 9, 9); }},
        {"beside, result", 12552, [=] { return QelMatrixCombineHoriz(a, a, o, 3, 2, 3, 2, 3, 3); }},
        {"above", 12549, [=] { return QelMatrixCombineVert(a, a, o, 3, 2, 2, 3, 9, 9); }},
        {"above, result", 12553, [=] { return QelMatrixCombineVert(a, s, o, 3, 2, 2, 2, 4, 2); }},
        {"a negative count is no room", 12552, [=] { return QelMatrixCombineHoriz(a, a, o, 3, 2, 3, -1, 3, 1); }},
        {"add", 12551, [=] { return QelMatrixAdd(a, a, o, 3, 2, 2, 3, 3, 2); }},
        {"scalar", 12551, [=] { return QelMatrixElemDivide(a, 0, o, 3, 2, 2, 3); }},
        {"divisor", 12556, [=] { return QelMatrixElemDivide(a, -1e-11, o, 3, 2, 3, 2); }},
        {"divisor nan", 12556, [=] { return QelMatrixElemDivide(a, s_nan, o, 3, 2, 3, 2); }},
        {"transpose", 12554, [=] { return QelMatrixTranspose(a, o, 3, 2, 3, 2); }},
        {"is equal", 12544, [=] { return QelMatrixIsEqual(a, a, o, 3, 2, 2, 3, 3, 2); }},
        {"is not equal", 12551, [=] { return QelMatrixIsNotEqual(a, a, o, 3, 2, 2, 3, 3, 2); }},
        {"not", 12551, [=] { return QelMatrixLogicalNot(a, o, 3, 2, 2, 3); }},
        {"diagonal", 12554, [=] { return QelMatrixGetDiagonal(a, o, 3, 2, 2); }},
        {"kronecker", 12554, [=] { return QelMatrixKroneckerMultiply(a, s, o, 3, 2, 2, 2, 6, 2); }},
        {"kronecker overflow", 12554, [=] { return QelMatrixKroneckerMultiply(a, s, o, 65536, 1, 65536, 1, 0, 1); }},
        {"null", 12544, [=] { return QelMatrixAdd(nullptr, a, o, 3, 2, 3, 2, 3, 2); }},
        {"null scalar", 12544, [=] { return QelMatrixTrace(a, nullptr, 3, 2); }},
        {"too large to exist", 12544, [=] { return QelMatrixSetToZero(o, INT_MAX, INT_MAX); }},
        {"inverse of what is not square", 12555, [=] { return QelMatrixInverse(a, o, 3, 2, 2, 2); }},
        {"inverse into another shape", 12551, [=] { return QelMatrixInverse(s, o, 2, 2, 3, 2); }},
        {"product", 12554, [=] { return QelMatrixMultiply(a, a, o, 3, 2, 3, 2, 3, 2); }},
        {"determinant", 12555, [=] { return QelMatrixDet(a, o, 3, 2); }},
        {"solve, not square", 12555, [=] { return QelMatrixSolve(a, a, o, 3, 2, 2, 2, 2, 2); }},
        {"solve, rows", 12554, [=] { return QelMatrixSolve(s, a, o, 2, 2, 3, 2, 3, 2); }},
        {"solve, result", 12554, [=] { return QelMatrixSolve(s, s, o, 2, 2, 2, 2, 2, 1); }},
        {"pseudo-inverse", 12554, [=] { return QelMatrixGeneralPseudoInverse(a, o, 3, 2, 3, 2); }},
        {"cholesky", 12555, [=] { return QelMatrixCholeskyDecomposition(a, o, 3, 2, 3, 2); }},
        {"orthonormal", 12551, [=] { return QelMatrixGramSchmidtOrt(a, o, 3, 2, 2, 3); }},
        {"eigenvectors, shape", 12551, [=] { return QelMatrixEigenVectors(s, o, o + 9, o + 30, 2, 2, 9, 3, 3); }},
        {"eigenvectors, values", 12554, [=] { return QelMatrixEigenVectors(s, o, o + 9, o + 30, 2, 2, 3, 2, 2); }},
        {"eigenvalues", 12555, [=] { return QelMatrixEigenValues(a, o, o + 9, 3, 2, 3); }},
        {"sweep, square", 12555, [=] { return QelMatrixSweep(o, 1, 1, 1, 3, 2); }},
        {"sweep, first 0", 12563, [=] { return QelMatrixSweep(o, 0, 1, 1, 2, 2); }},
        {"sweep, direction", 12563, [=] { return QelMatrixSweep(o, 1, 1, 2, 2, 2); }},
        {"sweep, direction before nothing to do", 12563, [=] { return QelMatrixSweep(o, 2, 1, 0, 2, 2); }},
        {"sweep, least int", 12563, [=] { return QelMatrixSweep(o, INT_MIN, 1, 1, 2, 2); }},
        {"singular values", 12554, [=] { return QelMatrixSingularValues(a, o, 3, 2, 3); }},
        {"decomposition, u", 12554,
         [=] { return QelMatrixSingularValuesDecomp(a, o, o + 9, o + 20, 3, 2, 2, 2, 2, 2, 2); }},
        {"decomposition, v", 12555,
         [=] { return QelMatrixSingularValuesDecomp(a, o, o + 9, o + 20, 3, 2, 3, 2, 2, 2, 3); }},
        {"decomposition, order of v", 12554,
         [=] { return QelMatrixSingularValuesDecomp(a, o, o + 9, o + 20, 3, 2, 3, 2, 2, 3, 3); }},
        {"correlations, square", 12555, [=] { return QelMatrixCorrelations(a, o, 3, 2, 2, 3, 1); }},
        {"correlations, order", 12554, [=] { return QelMatrixCorrelations(a, o, 3, 2, 3, 3, 1); }},
        {"means", 12554, [=] { return QelMatrixMeans(a, o, 3, 2, 3); }},
    };
    for (const Failure& failure : failures) {
        SCOPED_TRACE(failure.name);
        std::fill(std::begin(s_out), std::end(s_out), s_untouched);
        QMMLSetLastError(5);
        EXPECT_EQ(failure.call(), 0);
        EXPECT_EQ(QMMLGetLastError(), failure.code);
        EXPECT_TRUE(std::all_of(std::begin(s_out), std::end(s_out), [](double v) { return v == s_untouched; }));
    }
}

TEST(MatrixArrays, TranslateWhatTheKernelsReport)
{
    const double singular[] = {1, 2, 2, 4}, huge[] = {1e100, 0, 0, 1e100}, indefinite[] = {1, 2, 2, 1};
    const double constant[] = {1, 1, 1, 1, 2, 3};
    double out[9] = {7, 7, 7, 7, 7, 7, 7, 7, 7}, zero[] = {0};
    const auto code = [](int result) {
        EXPECT_EQ(result, 0);
        return QMMLSetLastError(0);
    };
    EXPECT_EQ(code(QelMatrixInverse(singular, out, 2, 2, 2, 2)), 12557);
    EXPECT_EQ(code(QelMatrixDet(singular, out, 2, 2)), 12557);
    EXPECT_EQ(out[0], 0.0);
    out[0] = 7;
    EXPECT_EQ(code(QelMatrixDet(huge, out, 2, 2)), 12560);
    EXPECT_EQ(out[0], 0.0);
    EXPECT_EQ(code(QelMatrixCholeskyDecomposition(indefinite, out, 2, 2, 2, 2)), 12557);
    EXPECT_EQ(code(QelMatrixSweep(zero, 1, 1, 1, 1, 1)), 12557);
    EXPECT_EQ(code(QelMatrixCorrelations(constant, out, 3, 2, 2, 2, 1)), 12564);

    Numbers large(400, 0.0), values(20), product(400);
    for (std::size_t i = 0; i < 20; ++i)
        large[i * 21] = static_cast<double>(i + 1);
    qmml::fail_allocation(1);
    EXPECT_EQ(code(QelMatrixTranspose(large.data(), large.data(), 20, 20, 20, 20)), 12558);
    qmml::fail_allocation(2);
    EXPECT_EQ(code(QelMatrixSolve(large.data(), large.data(), product.data(), 20, 20, 20, 20, 20, 20)), 12558);
    qmml::fail_allocation(1);
    EXPECT_EQ(code(QelMatrixEigenValues(large.data(), values.data(), out, 20, 20, 20)), 12558);
    qmml::fail_allocation(0);
}

TEST(MatrixArrays, SuccessLeavesTheLastErrorAlone)
{
    double v[3];
    QMMLSetLastError(5);
    EXPECT_EQ(QelMatrixGetColumn(s_a, 2, v, 3, 2, 3), 1);
    EXPECT_EQ(v[2], 6);
    EXPECT_EQ(QMMLSetLastError(0), 5);
}

TEST(MatrixArrays, EmptyOnesMayBeNull)
{
    double det = 0, rank = 7, trace = 7;
    EXPECT_EQ(QelMatrixAdd(nullptr, nullptr, nullptr, 0, 3, 0, 3, 0, 3), 1);
    EXPECT_EQ(QelMatrixTranspose(nullptr, nullptr, -1, 3, 3, -1), 1);
    EXPECT_EQ(QelMatrixCombineVert(nullptr, nullptr, nullptr, 2, 0, 3, 0, 5, 0), 1);
    EXPECT_EQ(QelMatrixGetRow(nullptr, 1, nullptr, 2, 0, 0), 1);
    EXPECT_EQ(QelMatrixInverse(nullptr, nullptr, 0, 0, 0, 0), 1);
    EXPECT_EQ(QelMatrixDet(nullptr, &det, 0, 0), 1);
    EXPECT_EQ(det, 1);
    EXPECT_EQ(QelMatrixRank(nullptr, &rank, 0, 4), 1);
    EXPECT_EQ(rank, 0);
    EXPECT_EQ(QelMatrixTrace(nullptr, &trace, 3, 0), 1);
    EXPECT_EQ(trace, 0);
    EXPECT_EQ(QelMatrixAllNonZero(nullptr, 0, 0), 1);
    EXPECT_EQ(QelMatrixAnyNonZero(nullptr, 0, 0), 0);
}

TEST(MatrixArrays, BlocksAreCutToWhatThereIs)
{
    struct Case {
        int row, col, rows, cols;
        Numbers c; // 2 x 2, 9 where untouched
    };
    const Case cases[] = {
        {1, 1, 0, 0, {1, 2, 4, 5}},  {0, 0, -1, -1, {1, 2, 4, 5}}, {2, 2, 0, 0, {5, 6, 9, 9}},
        {3, 1, 9, 1, {3, 9, 9, 9}},  {1, 2, 1, 9, {4, 9, 9, 9}},   {2, 1, 1, 2, {2, 9, 5, 9}},
        {1, 1, -2, 1, {9, 9, 9, 9}}, {3, 2, -1, 0, {6, 9, 9, 9}},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(testing::Message() << c.row << ' ' << c.col << ' ' << c.rows << ' ' << c.cols);
        Numbers out(4, 9), copied(4, 9);
        EXPECT_EQ(QelMatrixExtract(s_a, c.row, c.col, c.rows, c.cols, out.data(), 3, 2, 2, 2), 1);
        EXPECT_EQ(out, c.c);
        EXPECT_EQ(QelMatrixCopy(s_a, c.row, c.col, c.rows, c.cols, copied.data(), 1, 0, 3, 2, 2, 2), 1);
        EXPECT_EQ(copied, c.c);
    }
    Numbers a(s_a, s_a + 6); // onto itself, overlapping
    EXPECT_EQ(QelMatrixCopy(a.data(), 1, 1, 2, 2, a.data(), 2, 1, 3, 2, 3, 2), 1);
    EXPECT_EQ(a, (Numbers{1, 1, 2, 4, 4, 5}));
    EXPECT_EQ(QelMatrixFill(8, a.data(), 2, 0, -1, 1, 3, 2), 1);
    EXPECT_EQ(a, (Numbers{1, 8, 8, 4, 4, 5}));
}

TEST(MatrixArrays, RowsDiagonalsAndUnions)
{
    Numbers row(2), beside(9), diagonal(3), square(s_square, s_square + 4), tall(10);
    EXPECT_EQ(QelMatrixGetRow(s_a, 3, row.data(), 3, 2, 2), 1);
    EXPECT_EQ(row, (Numbers{3, 6}));
    EXPECT_EQ(QelMatrixCombineHoriz(s_a, s_a + 1, beside.data(), 3, 2, 3, 1, 3, 3), 1);
    EXPECT_EQ(beside, (Numbers{1, 2, 3, 4, 5, 6, 2, 3, 4}));
    EXPECT_EQ(QelMatrixCombineVert(s_a, s_square, tall.data(), 3, 2, 2, 2, 5, 2), 1);
    EXPECT_EQ(tall, (Numbers{1, 2, 3, 4, 2, 4, 5, 6, 2, 3}));
    EXPECT_EQ(QelMatrixGetDiagonal(s_a, diagonal.data(), 3, 2, 3), 1);
    EXPECT_EQ(diagonal, (Numbers{1, 5, 0}));
    EXPECT_EQ(QelMatrixSetDiagonal(square.data(), row.data(), 2, 2, 2), 1);
    EXPECT_EQ(square, (Numbers{3, 2, 2, 6}));
    Numbers transposed(s_a, s_a + 6);
    EXPECT_EQ(QelMatrixTranspose(transposed.data(), transposed.data(), 3, 2, 2, 3), 1);
    EXPECT_EQ(transposed, (Numbers{1, 4, 2, 5, 3, 6}));
    Numbers product(8);
    EXPECT_EQ(QelMatrixKroneckerMultiply(row.data(), s_square, product.data(), 1, 2, 2, 2, 2, 4), 1);
    EXPECT_EQ(product, (Numbers{12, 6, 6, 9, 24, 12, 12, 18}));
}

TEST(MatrixArrays, ElementsCompareWithTolerance)
{
    const double denormal = std::numeric_limits<double>::denorm_min(), above = std::nextafter(1.0, 2.0);
    const double a[] = {1, s_nan, -1, denormal}, b[] = {above, 1, 1, 0};
    struct Case {
        const char* name;
        int (*call)(const double*, const double*, double*, int, int, int, int, int, int);
        Numbers expected;
    };
    const Case cases[] = {
        {"less", QelMatrixIsLess, {0, 1, 1, 0}},       {"less equal", QelMatrixIsLessEqual, {1, 1, 1, 1}},
        {"greater", QelMatrixIsGreater, {0, 0, 0, 0}}, {"greater equal", QelMatrixIsGreaterEqual, {1, 0, 0, 1}},
        {"equal", QelMatrixIsEqual, {1, 0, 0, 1}},     {"not equal", QelMatrixIsNotEqual, {0, 1, 1, 0}},
        {"and", QelMatrixLogicalAnd, {1, 0, 0, 0}},    {"or", QelMatrixLogicalOr, {1, 1, 1, 0}},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.name);
        Numbers out(4);
        EXPECT_EQ(c.call(a, b, out.data(), 2, 2, 2, 2, 2, 2), 1);
        EXPECT_EQ(out, c.expected);
    }
    Numbers out(4);
    EXPECT_EQ(QelMatrixLogicalNot(a, out.data(), 2, 2, 2, 2), 1);
    EXPECT_EQ(out, (Numbers{0, 1, 1, 1}));
    EXPECT_EQ(QelMatrixAllNonZero(a, 3, 1), 1);
    EXPECT_EQ(QelMatrixAllNonZero(a, 2, 2), 0);
    EXPECT_EQ(QelMatrixAnyNonZero(a + 3, 1, 1), 0);
    EXPECT_EQ(QelMatrixElemDivide(b, 1e-10, out.data(), 2, 2, 2, 2), 1);
    EXPECT_EQ(out[3], 0.0);
    EXPECT_EQ(out[1], 1 / 1e-10);
}

TEST(MatrixArrays, OutputsMayBeInputsWhereTheHeaderSaysSo)
{
    const Numbers a = {4, 2, 2, 3}, b = {1, 0, 1, 2}, product = {4, 2, 8, 8};
    for (int n : {2, 20}) { // copies on the stack and on the heap
        const auto size = static_cast<std::size_t>(n);
        const auto widened = [&](const Numbers& m) {
            Numbers wide(size * size, 0.0);
            EXPECT_EQ(QelMatrixIdentity(wide.data(), n, n), 1);
            EXPECT_EQ(QelMatrixCopy(m.data(), 1, 1, 2, 2, wide.data(), 1, 1, 2, 2, n, n), 1);
            return wide;
        };
        Numbers left = widened(a), right = widened(b), twice = widened(b);
        EXPECT_EQ(QelMatrixMultiply(left.data(), right.data(), left.data(), n, n, n, n, n, n), 1);
        EXPECT_EQ(left, widened(product));
        EXPECT_EQ(QelMatrixMultiply(widened(a).data(), right.data(), right.data(), n, n, n, n, n, n), 1);
        EXPECT_EQ(right, widened(product));
        EXPECT_EQ(QelMatrixMultiply(twice.data(), twice.data(), twice.data(), n, n, n, n, n, n), 1);
        EXPECT_EQ(twice, widened({1, 0, 3, 4}));
        Numbers inverse = widened({2, 0, 0, 4});
        EXPECT_EQ(QelMatrixInverse(inverse.data(), inverse.data(), n, n, n, n), 1);
        EXPECT_EQ(inverse, widened({0.5, 0, 0, 0.25}));
        Numbers x = widened({8, 0, 0, 8});
        EXPECT_EQ(QelMatrixSolve(widened({2, 0, 0, 4}).data(), x.data(), x.data(), n, n, n, n, n, n), 1);
        EXPECT_EQ(x, widened({4, 0, 0, 2}));
    }
}

TEST(CArrDim, DescribesAnArray)
{
    int dims[2] = {9, 9};
    EXPECT_EQ(CArrDim(3, 2).QMMLGetArrayDimensions(nullptr, dims, 1), 1);
    EXPECT_EQ(dims[0], 3);
    EXPECT_EQ(dims[1], 9);
    EXPECT_EQ(CArrDim(3, 2).QMMLGetArrayDimensions(nullptr, dims, 2), 2);
    EXPECT_EQ(dims[1], 2);
    EXPECT_EQ(CArrDim(3).QMMLGetArrayDimensions(nullptr, dims, 2), 1);
    EXPECT_EQ(dims[1], 1);
}

} // namespace
