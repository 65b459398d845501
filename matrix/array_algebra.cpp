// Algebra over the caller's matrices: shape rules, copies where a kernel works in place, meanings of its status.
#include "matrix/array_call.h"
#include "matrix/blocks.h"
#include "matrix/eigen.h"
#include "matrix/elimination.h"
#include "matrix/factors.h"
#include "matrix/moments.h"
#include "matrix/product.h"
#include "matrix/singular_values.h"
#include "matrix/solve.h"
#include "matrix/work_copy.h"

#include <algorithm>
#include <qmml/matrix.h>

using namespace qmml::matrix;

namespace {

constexpr Shape s_scalar = {1, 1};

// For kernels that work in place on a copy in the caller's output.
void copy_into(double* c, const double* a, Shape shape) noexcept
{
    if (c != a)
        copy_block(a, shape.rows, c, shape.rows, {shape.rows, shape.cols});
}

} // namespace

int QelMatrixInverse(const double* A, double* C, int aR, int aC, int cR, int cC)
{
    const Shape a = {aR, aC}, c = {cR, cC};
    return array_call({{A, a}, {C, c}}, {{a.square(), Error::not_square}, {c == a, Error::shapes_differ}}, [&] {
        copy_into(C, A, a);
        return invert_in_place(C, aR);
    });
}

int QelMatrixMultiply(const double* A, const double* B, double* C, int aR, int aC, int bR, int bC, int cR, int cC)
{
    const Array a = {A, {aR, aC}}, b = {B, {bR, bC}};
    const auto product = [&](const double* left, const double* right) {
        return multiply(C, cR, cC, left, aR, aC, right, bR, bC);
    };
    return array_call({a, b, {C, {cR, cC}}}, {{aC == bR && aR == cR && bC == cC, Error::not_conforming}},
                      [&] {
                          if (A != C && B != C)
                              return product(A, B);
                          WorkCopy copy(A == C ? a : b);
                          if (!copy)
                              return Status::out_of_memory;
                          if (A == B)
                              return product(copy.data(), copy.data());
                          return A == C ? product(copy.data(), B) : product(A, copy.data());
                      },
                      {{1, Error::not_conforming}});
}

int QelMatrixDet(const double* A, double* det, int aR, int aC)
{
    double value = 0;
    return array_call(
        {{A, {aR, aC}}, {det, s_scalar}}, {{aR == aC, Error::not_square}}, [&] { return determinant(A, aR, value); },
        {{3, Error::determinant_out_of_range}}, [&] { *det = value; });
}

int QelMatrixRank(const double* A, double* rank, int aR, int aC)
{
    double value = 0;
    const auto deliver = [&] { *rank = value; };
    return array_call(
        {{A, {aR, aC}}, {rank, s_scalar}}, {}, [&] { return matrix_rank(A, aR, aC, value); }, {}, deliver);
}

int QelMatrixSolve(const double* A, const double* B, double* X, int aR, int aC, int bR, int bC, int xR, int xC)
{
    const Array a = {A, {aR, aC}}, b = {B, {bR, bC}};
    const Shape x = {xR, xC};
    return array_call({a, b, {X, x}},
                      {{a.shape.square(), Error::not_square}, {bR == aR && x == b.shape, Error::not_conforming}}, [&] {
                          WorkCopy factors(a), solution(b);
                          if (!factors || !solution)
                              return Status::out_of_memory;
                          const Status status = solve_in_place(factors.data(), solution.data(), aR, bC);
                          if (status == Status::success)
                              copy_block(solution.data(), xR, X, xR, {xR, xC});
                          return status;
                      });
}

int QelMatrixGeneralPseudoInverse(const double* A, double* C, int aR, int aC, int cR, int cC)
{
    return array_call({{A, {aR, aC}}, {C, {cR, cC}}}, {{cR == aC && cC == aR, Error::not_conforming}},
                      [&] { return pseudo_inverse(A, aR, aC, C); }, {{1, Error::no_pseudo_inverse}});
}

int QelMatrixCholeskyDecomposition(const double* A, double* C, int aR, int aC, int cR, int cC)
{
    const Shape a = {aR, aC}, c = {cR, cC};
    return array_call({{A, a}, {C, c}}, {{a.square(), Error::not_square}, {c == a, Error::shapes_differ}}, [&] {
        copy_into(C, A, a);
        return cholesky_in_place(C, aR);
    });
}

int QelMatrixGramSchmidtOrt(const double* A, double* C, int aR, int aC, int cR, int cC)
{
    const Shape a = {aR, aC}, c = {cR, cC};
    return array_call({{A, a}, {C, c}}, {{c == a, Error::shapes_differ}}, [&] {
        copy_into(C, A, a);
        return orthonormalise_in_place(C, aR, aC);
    });
}

static constexpr std::initializer_list<Meaning> s_eigen_meanings = {
    {1, Error::no_eigenvalues}, {2, Error::out_of_memory}, {3, Error::eigenproblem_failed}, {99, Error::stopped}};

int QelMatrixEigenVectors(const double* A, double* values, double* vectors, double* count, int aR, int aC, int n,
                          int vR, int vC)
{
    const Shape a = {aR, aC}, v = {vR, vC};
    int positive = 0;
    return array_call(
        {{A, a}, {values, {n, 1}}, {vectors, v}, {count, s_scalar}},
        {{a.square(), Error::not_square}, {v == a, Error::shapes_differ}, {n == aR, Error::not_conforming}},
        [&] { return eigen_symmetric(A, aR, values, vectors, positive); }, s_eigen_meanings,
        [&] { *count = positive; });
}

int QelMatrixEigenValues(const double* A, double* values, double* count, int aR, int aC, int n)
{
    const Shape a = {aR, aC};
    int positive = 0;
    return array_call(
        {{A, a}, {values, {n, 1}}, {count, s_scalar}},
        {{a.square(), Error::not_square}, {n == aR, Error::not_conforming}},
        [&] {
            WorkCopy vectors(a);
            return vectors ? eigen_symmetric(A, aR, values, vectors.data(), positive) : Status::out_of_memory;
        },
        s_eigen_meanings, [&] { *count = positive; });
}

int QelMatrixSweep(double* A, int first, int last, int direction, int aR, int aC)
{
    // The least int has no neighbour below; it is no pivot either way.
    const auto from_zero = [](int position) { return position < 0 ? -1 : position - 1; };
    return array_call({{A, {aR, aC}}}, {{aR == aC, Error::not_square}},
                      [&] { return sweep(A, aR, from_zero(first), from_zero(last), direction); },
                      {{2, Error::invalid_sweep}});
}

int QelMatrixSingularValues(const double* A, double* w, int aR, int aC, int n)
{
    return array_call({{A, {aR, aC}}, {w, {n, 1}}}, {{n == aC, Error::not_conforming}},
                      [&] { return singular_values(A, aR, aC, w); });
}

int QelMatrixSingularValuesDecomp(const double* A, double* U, double* w, double* V, int aR, int aC, int uR, int uC,
                                  int n, int vR, int vC)
{
    const Shape u = {std::max(aR, aC), aC}, v = {vR, vC};
    const bool conforming = Shape{uR, uC} == u && n == aC && (!v.square() || vR == aC);
    return array_call({{A, {aR, aC}}, {U, {uR, uC}}, {w, {n, 1}}, {V, v}},
                      {{conforming, Error::not_conforming}, {v.square(), Error::not_square}}, [&] {
                          if (U != A || uR != aR) {
                              fill_block(U, uR, {uR, uC}, 0.0);
                              copy_block(A, aR, U, uR, {aR, aC});
                          }
                          return singular_value_decompose(U, uR, uC, w, V);
                      });
}

int QelMatrixCorrelations(const double* data, double* R, int dR, int dC, int rR, int rC, int centred)
{
    int failed_column = 0;
    return array_call(
        {{data, {dR, dC}}, {R, {rR, rC}}}, {{rR == rC, Error::not_square}, {rR == dC, Error::not_conforming}},
        [&] { return correlations(data, dR, dC, R, centred != 0, failed_column); }, {{3, Error::no_variance}}, [] {},
        Error::stopped);
}

int QelMatrixCrossProductOfDev(const double* data, double* P, int dR, int dC, int pR, int pC, int centred)
{
    return array_call({{data, {dR, dC}}, {P, {pR, pC}}},
                      {{pR == pC, Error::not_square}, {pR == dC, Error::not_conforming}},
                      [&] { return cross_products(data, dR, dC, P, centred != 0); });
}

int QelMatrixMeans(const double* data, double* means, int dR, int dC, int n)
{
    return array_call({{data, {dR, dC}}, {means, {n, 1}}}, {{n == dC, Error::not_conforming}},
                      [&] { return column_means(data, dR, dC, means); });
}
