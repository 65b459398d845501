// The raw entry points: the caller's arguments go to the kernel as they are.
#include "core/guarded_call.h"
#include "matrix/array_call.h"
#include "matrix/eigen.h"
#include "matrix/elimination.h"
#include "matrix/factors.h"
#include "matrix/moments.h"
#include "matrix/product.h"
#include "matrix/singular_values.h"
#include "matrix/solve.h"

#include <algorithm>
#include <optional>
#include <qmml/matrix.h>

using namespace qmml;
using namespace qmml::matrix;

namespace {

// Otherwise the kernel would fault.
bool present(const Array& array) noexcept
{
    return array.shape.size() <= s_most_elements && (array.data != nullptr || array.shape.size() == 0);
}

// How an entry point differs from the others.
struct Deviations {
    Status without_arrays = Status::out_of_memory; // an array is not there, or larger than any can be
    std::optional<Status> after_fault = {};        // otherwise the last status that the kernel has given
};

// 0 for success, 1 for failure and for what counts as an exception. deliver() writes the scalar results, and does not
// after a fault.
template <class Kernel, class Deliver>
int raw_entry(std::initializer_list<Array> arrays, int* status, Kernel kernel, Deliver deliver,
              Deviations deviations = {}) noexcept
{
    const bool all_present = std::all_of(arrays.begin(), arrays.end(), present);
    Status given = Status::success;
    const Outcome outcome = guarded_call(
        [&] { return (given = all_present ? kernel() : deviations.without_arrays) == Status::success; }, deliver);
    if (status != nullptr)
        *status = static_cast<int>(outcome == Outcome::fault ? deviations.after_fault.value_or(given) : given);
    return outcome != Outcome::success;
}

template <class Kernel>
int raw_entry(std::initializer_list<Array> arrays, int* status, Kernel kernel) noexcept
{
    return raw_entry(arrays, status, kernel, [] {});
}

// A result that the caller does not want has no place.
template <class T>
void put(T* place, T value) noexcept
{
    if (place != nullptr)
        *place = value;
}

} // namespace

int ComputeDeterminant__(const double* a, int n, double* det, int* status)
{
    double value = 0;
    return raw_entry(
        {{a, {n, n}}}, status, [&] { return determinant(a, n, value); }, [&] { put(det, value); });
}

int MatrixInverse__(double* a, int n, int* status)
{
    return raw_entry({{a, {n, n}}}, status, [&] { return invert_in_place(a, n); });
}

int MatrixMultiply__(double* c, int cRows, int cCols, const double* a, int aRows, int aCols, const double* b, int bRows,
                     int bCols, int* status)
{
    const bool conforming = aCols == bRows && aRows == cRows && bCols == cCols; // looked at before anything else
    return raw_entry(
        {{c, {cRows, cCols}}, {a, {aRows, aCols}}, {b, {bRows, bCols}}}, status,
        [&] { return multiply(c, cRows, cCols, a, aRows, aCols, b, bRows, bCols); }, [] {},
        {.without_arrays = conforming ? Status::out_of_memory : Status::singular});
}

int SolveLinearSetOfEquations__(double* a, double* b, int n, int m, int* status)
{
    return raw_entry({{a, {n, n}}, {b, {n, m}}}, status, [&] { return solve_in_place(a, b, n, m); });
}

int EigenValuesAndVectors__(const double* a, int n, double* values, double* vectors, int* positiveCount, int* status)
{
    int positive = 0;
    return raw_entry(
        {{a, {n, n}}, {values, {n, 1}}, {vectors, {n, n}}}, status,
        [&] { return eigen_symmetric(a, n, values, vectors, positive); }, [&] { put(positiveCount, positive); });
}

int SingularValueDecomposition__(double* u, int m, int n, double* w, double* v, int* status)
{
    return raw_entry({{u, {m, n}}, {w, {n, 1}}, {v, {n, n}}}, status,
                     [&] { return singular_value_decompose(u, m, n, w, v); });
}

int SingularValuesForMatrix__(const double* a, int r, int c, double* w, int* status)
{
    return raw_entry({{a, {r, c}}, {w, {c, 1}}}, status, [&] { return singular_values(a, r, c, w); });
}

int RankOfMatrix__(const double* a, int r, int c, double* rank, int* status)
{
    double value = 0;
    return raw_entry(
        {{a, {r, c}}}, status, [&] { return matrix_rank(a, r, c, value); }, [&] { put(rank, value); });
}

int GeneralOrPseudoInverse__(const double* a, int r, int c, double* result, int* status)
{
    return raw_entry({{a, {r, c}}, {result, {c, r}}}, status, [&] { return pseudo_inverse(a, r, c, result); });
}

int SweepingOnMatrix__(double* a, int n, int first, int last, int direction, int* status)
{
    return raw_entry({{a, {n, n}}}, status, [&] { return sweep(a, n, first, last, direction); });
}

int GramSchmidthOrthonormal__(double* a, int rows, int cols, int* status)
{
    return raw_entry({{a, {rows, cols}}}, status, [&] { return orthonormalise_in_place(a, rows, cols); });
}

int CholeskyDecomposition__(double* a, int n, int* status)
{
    return raw_entry({{a, {n, n}}}, status, [&] { return cholesky_in_place(a, n); });
}

int SumsOfSquaredDeviations__(const double* data, int r, int c, double* ssd, int* status)
{
    return raw_entry({{data, {r, c}}, {ssd, {c, 1}}}, status,
                     [&] { return sums_of_squared_deviations(data, r, c, ssd); });
}

int ComputeMeans__(const double* data, int r, int c, double* means, int* status)
{
    return raw_entry({{data, {r, c}}, {means, {c, 1}}}, status, [&] { return column_means(data, r, c, means); });
}

int CrossProductsOfDeviations__(const double* data, int r, int c, double* result, int centred, int* status)
{
    return raw_entry({{data, {r, c}}, {result, {c, c}}}, status,
                     [&] { return cross_products(data, r, c, result, centred != 0); });
}

int ComputeCorrelationMatrix__(const double* data, int r, int c, double* result, int centred, int* status,
                               int* failedColumn)
{
    int failed = -1;
    return raw_entry(
        {{data, {r, c}}, {result, {c, c}}}, status,
        [&] { return correlations(data, r, c, result, centred != 0, failed); },
        [&] {
            if (failed >= 0)
                put(failedColumn, failed);
        },
        {.after_fault = Status::stopped});
}
