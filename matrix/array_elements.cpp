// Element by element, and sums over the elements.
#include "core/compare.h"
#include "matrix/array_call.h"
#include "matrix/blocks.h"

#include <algorithm>
#include <cmath>
#include <qmml/matrix.h>

using namespace qmml::matrix;

namespace {

// A loop of its own, so that no arithmetic leaves the guard around its call.
template <class Operation>
[[gnu::noinline]] void apply(const double* a, const double* b, double* c, std::int64_t n, Operation operation) noexcept
{
    for (std::int64_t i = 0; i < n; ++i)
        c[i] = operation(a[i], b[i]);
}
template <class Operation>
[[gnu::noinline]] void apply(const double* a, double* c, std::int64_t n, Operation operation) noexcept
{
    for (std::int64_t i = 0; i < n; ++i)
        c[i] = operation(a[i]);
}

template <class Operation>
int combine(const Array& a, const Array& b, double* c, Shape c_shape, Operation operation,
            Error difference = Error::shapes_differ) noexcept
{
    return array_call({a, b, {c, c_shape}}, {{a.shape == b.shape && a.shape == c_shape, difference}}, [&] {
        apply(a.data, b.data, c, c_shape.size(), operation);
        return Status::success;
    });
}

template <class Operation>
int change(const Array& a, double* c, Shape c_shape, Operation operation, Rule further = {true, Error::none}) noexcept
{
    return array_call({a, {c, c_shape}}, {{a.shape == c_shape, Error::shapes_differ}, further}, [&] {
        apply(a.data, c, c_shape.size(), operation);
        return Status::success;
    });
}

double truth(bool value) noexcept
{
    return value ? 1.0 : 0.0;
}
bool is_true(double value) noexcept
{
    return qmml::is_greater(value, 0.0);
}
bool is_zero(double value) noexcept
{
    return qmml::is_equal(value, 0.0);
}

} // namespace

int QelMatrixAdd(const double* A, const double* B, double* C, int aR, int aC, int bR, int bC, int cR, int cC)
{
    return combine({A, {aR, aC}}, {B, {bR, bC}}, C, {cR, cC}, [](double a, double b) { return a + b; });
}

int QelMatrixSubtract(const double* A, const double* B, double* C, int aR, int aC, int bR, int bC, int cR, int cC)
{
    return combine({A, {aR, aC}}, {B, {bR, bC}}, C, {cR, cC}, [](double a, double b) { return a - b; });
}

int QelMatrixElemAdd(const double* A, double s, double* C, int aR, int aC, int cR, int cC)
{
    return change({A, {aR, aC}}, C, {cR, cC}, [s](double a) { return a + s; });
}

int QelMatrixElemSubtract(const double* A, double s, double* C, int aR, int aC, int cR, int cC)
{
    return change({A, {aR, aC}}, C, {cR, cC}, [s](double a) { return a - s; });
}

int QelMatrixElemMultiply(const double* A, double s, double* C, int aR, int aC, int cR, int cC)
{
    return change({A, {aR, aC}}, C, {cR, cC}, [s](double a) { return a * s; });
}

int QelMatrixElemDivide(const double* A, double s, double* C, int aR, int aC, int cR, int cC)
{
    const bool large_enough = qmml::is_greater_equal(std::fabs(s), 1e-10);
    return change({A, {aR, aC}}, C, {cR, cC}, [s](double a) { return a / s; },
                  {large_enough, Error::divisor_too_small});
}

int QelMatrixIsLess(const double* A, const double* B, double* C, int aR, int aC, int bR, int bC, int cR, int cC)
{
    return combine({A, {aR, aC}}, {B, {bR, bC}}, C, {cR, cC},
                   [](double a, double b) { return truth(qmml::is_less(a, b)); });
}

int QelMatrixIsLessEqual(const double* A, const double* B, double* C, int aR, int aC, int bR, int bC, int cR, int cC)
{
    return combine({A, {aR, aC}}, {B, {bR, bC}}, C, {cR, cC},
                   [](double a, double b) { return truth(qmml::is_less_equal(a, b)); });
}

int QelMatrixIsGreater(const double* A, const double* B, double* C, int aR, int aC, int bR, int bC, int cR, int cC)
{
    return combine({A, {aR, aC}}, {B, {bR, bC}}, C, {cR, cC},
                   [](double a, double b) { return truth(qmml::is_greater(a, b)); });
}

int QelMatrixIsGreaterEqual(const double* A, const double* B, double* C, int aR, int aC, int bR, int bC, int cR, int cC)
{
    return combine({A, {aR, aC}}, {B, {bR, bC}}, C, {cR, cC},
                   [](double a, double b) { return truth(qmml::is_greater_equal(a, b)); });
}

int QelMatrixIsEqual(const double* A, const double* B, double* C, int aR, int aC, int bR, int bC, int cR, int cC)
{
    return combine(
        {A, {aR, aC}}, {B, {bR, bC}}, C, {cR, cC}, [](double a, double b) { return truth(qmml::is_equal(a, b)); },
        Error::unusable_array);
}

int QelMatrixIsNotEqual(const double* A, const double* B, double* C, int aR, int aC, int bR, int bC, int cR, int cC)
{
    return combine({A, {aR, aC}}, {B, {bR, bC}}, C, {cR, cC},
                   [](double a, double b) { return truth(!qmml::is_equal(a, b)); });
}

int QelMatrixLogicalAnd(const double* A, const double* B, double* C, int aR, int aC, int bR, int bC, int cR, int cC)
{
    return combine({A, {aR, aC}}, {B, {bR, bC}}, C, {cR, cC},
                   [](double a, double b) { return truth(is_true(a) && is_true(b)); });
}

int QelMatrixLogicalOr(const double* A, const double* B, double* C, int aR, int aC, int bR, int bC, int cR, int cC)
{
    return combine({A, {aR, aC}}, {B, {bR, bC}}, C, {cR, cC},
                   [](double a, double b) { return truth(is_true(a) || is_true(b)); });
}

int QelMatrixLogicalNot(const double* A, double* C, int aR, int aC, int cR, int cC)
{
    return change({A, {aR, aC}}, C, {cR, cC}, [](double a) { return truth(qmml::is_less_equal(a, 0.0)); });
}

int QelMatrixAllNonZero(const double* A, int aR, int aC)
{
    const Array a = {A, {aR, aC}};
    return accepted({a}, {}) && std::none_of(A, A + a.shape.size(), is_zero);
}

int QelMatrixAnyNonZero(const double* A, int aR, int aC)
{
    const Array a = {A, {aR, aC}};
    return accepted({a}, {}) && !std::all_of(A, A + a.shape.size(), is_zero);
}

int QelMatrixTrace(const double* A, double* t, int aR, int aC)
{
    double sum = 0;
    return array_call(
        {{A, {aR, aC}}, {t, {1, 1}}}, {},
        [&] {
            const int order = std::min(aR, aC);
            for (std::int64_t i = 0; i < order; ++i)
                sum += A[i * aR + i];
            return Status::success;
        },
        {}, [&] { *t = sum; });
}

int QelMatrixSumOfSquares(const double* A, double* s, int aR, int aC)
{
    const Array a = {A, {aR, aC}};
    double sum = 0;
    return array_call(
        {a, {s, {1, 1}}}, {},
        [&] {
            for (std::int64_t i = 0; i < a.shape.size(); ++i)
                sum += A[i] * A[i];
            return Status::success;
        },
        {}, [&] { *s = sum; });
}

int QelMatrixKroneckerMultiply(const double* A, const double* B, double* C, int aR, int aC, int bR, int bC, int cR,
                               int cC)
{
    const bool conforming = cR == extent(aR) * extent(bR) && cC == extent(aC) * extent(bC);
    return array_call({{A, {aR, aC}}, {B, {bR, bC}}, {C, {cR, cC}}}, {{conforming, Error::not_conforming}}, [&] {
        kronecker_product(A, {aR, aC}, B, {bR, bC}, C);
        return Status::success;
    });
}
