/* qmml/matrix.h: dense matrices.
 *
 * An r x c matrix is one array of r*c doubles, column by column: element (i, j), counted from 1, stands at
 * [(j-1)*r + (i-1)]. A vector is a matrix of one column. The caller owns every array, outputs included; the library
 * never allocates or resizes one. An array is empty where one of its counts is below 1: it may be null then, nothing is
 * written to it, and scalar results are those of an empty matrix. Inputs and outputs share no storage unless a function
 * says so. Elements are taken as they are: a NaN goes where arithmetic carries it.
 *
 * Two families reach the same kernels.
 *
 *   Name__(...)        0 success, 1 failure; the reason is stored through the status argument:
 *                        1  singular, not of full rank, not positive definite, no convergence of the eigenproblem
 *                        2  no memory for a work array (or as the function says)
 *                        3  as the function says
 *                        4  the singular value iteration did not converge in 300 steps
 *                       99  stopped by the break check, or a fault in the correlations
 *
 *   QelMatrixName(...) 1 success, 0 failure; the reason is the last error of qmml/core.h, which success does not clear.
 *                      Arguments: arrays, scalars, then counts in the order of the arrays, two for a matrix (rows,
 *                      columns) and one for a vector. Shapes are checked before anything is written. Codes that any of
 *                      these functions may set:
 *                        12544  an array that cannot be one: null, or too large to exist
 *                        12557  the kernel's status 1     12558  status 2, or no memory for a copy
 *                        12559  status 99
 *                      A status without a code of its own gives 0 and leaves the last error alone.
 *
 * Floating-point faults are masked inside, whatever the caller unmasked, and no flag is left raised. A division by
 * zero, an overflow or an invalid operation that the caller had unmasked makes the call fail: 1 from a raw entry point,
 * 0 from an array function, no scalar result written.
 *
 * The bits of every result are the same on all machines. The kernels keep no state: calls may run side by side on
 * different arrays. Up to an order of 16 they work on the stack. */
#ifndef QMML_MATRIX_H
#define QMML_MATRIX_H

#include "qmml/export.h"

QMML_BEGIN_C

/* ==== Raw entry points ==== */

/* det(a) of the n x n a, by elimination with full pivoting; 0 on failure.
 * 1: a pivot below 1e-25 in size, or partial products that fall below 1e-25; 3: beyond 1e150 in size. */
QMML_API int ComputeDeterminant__(const double* a, int n, double* det, int* status);

/* The n x n a becomes its inverse, by elimination with full pivoting. 1: a pivot below 1e-25 in size; a is then partly
 * reduced. */
QMML_API int MatrixInverse__(double* a, int n, int* status);

/* c = a b, every element summed over ascending k, each product rounded before it is added. 1: aCols and bRows, aRows
 * and cRows, or bCols and cCols differ; c is untouched. */
QMML_API int MatrixMultiply__(double* c, int cRows, int cCols, const double* a, int aRows, int aCols, const double* b,
                              int bRows, int bCols, int* status);

/* a x = b for the m columns of b, by Crout's LU factorisation with scaled partial pivoting and one or two steps of
 * iterative refinement. b (n x m) becomes x and a (n x n) its factors, rows exchanged.
 * 1: a row without an element of 1e-20 in size. A pivot of 0 is replaced by 1e-20 and not reported. */
QMML_API int SolveLinearSetOfEquations__(double* a, double* b, int n, int m, int* status);

/* Eigenvalues of the symmetric n x n a in descending order, unit eigenvectors in the columns of vectors (n x n), and
 * how many values are greater than 0 (0 on failure). Householder reduction, implicit QL. 1: more than 300 iterations
 * for one value. */
QMML_API int EigenValuesAndVectors__(const double* a, int n, double* values, double* vectors, int* positiveCount,
                                     int* status);

/* u = U diag(w) V' for the m x n u, which becomes U; w has n values in descending order, v is n x n. Golub and Reinsch.
 * Hypotenuses are not scaled: elements near 1e154 overflow. */
QMML_API int SingularValueDecomposition__(double* u, int m, int n, double* w, double* v, int* status);

/* The c singular values of the r x c a, descending. Where r < c, the last ones are those of rows of zeros. */
QMML_API int SingularValuesForMatrix__(const double* a, int r, int c, double* w, int* status);

/* The number of singular values greater than 1e-14, an absolute bound. */
QMML_API int RankOfMatrix__(const double* a, int r, int c, double* rank, int* status);

/* The c x r pseudo-inverse; singular values up to 1e-14 count as zero. */
QMML_API int GeneralOrPseudoInverse__(const double* a, int r, int c, double* result, int* status);

/* Sweeps the symmetric n x n a on the pivots first..last, counted from 0, first > last meaning none; direction 1 is
 * forward, -1 reverse. Only the lower triangle is read; the result is symmetric. Both directions put -1/pivot on the
 * diagonal, and one undoes the other.
 * 1: a pivot below 1e-25 in size, pivots before it swept; 2: a pivot outside the matrix, another direction. */
QMML_API int SweepingOnMatrix__(double* a, int n, int first, int last, int direction, int* status);

/* The columns of a become orthonormal, by the modified Gram-Schmidt process. cols <= rows.
 * 1: a column whose remainder has a sum of squares below 1e-12. */
QMML_API int GramSchmidthOrthonormal__(double* a, int rows, int cols, int* status);

/* a = U'U: a becomes U, upper triangular with zeros below. A semi-definite a is accepted: a remainder within 1e-14 of
 * its diagonal element counts as 0. 1: not positive semi-definite. */
QMML_API int CholeskyDecomposition__(double* a, int n, int* status);

/* Moments of a data matrix of r cases (rows) and c variables (columns), in one pass. With up to 1000 cases the smallest
 * value of each variable is subtracted first, to 15 digits, so that a large common part does no harm. */
QMML_API int ComputeMeans__(const double* data, int r, int c, double* means, int* status);
QMML_API int SumsOfSquaredDeviations__(const double* data, int r, int c, double* ssd, int* status);
/* c x c; centred 0: raw sums of products. */
QMML_API int CrossProductsOfDeviations__(const double* data, int r, int c, double* result, int centred, int* status);
/* c x c, diagonal 1; centred 0: about the origin. 3: a variable without variance; failedColumn is then, counted from 0,
 * the later one of the first pair that has such a variable. */
QMML_API int ComputeCorrelationMatrix__(const double* data, int r, int c, double* result, int centred, int* status,
                                        int* failedColumn);

/* ==== Matrices over the caller's arrays ====
 * Codes beyond the common ones stand behind each function, in the order in which they are looked for. */

/* ---- Parts ---- rows, columns and positions count from 1 */
/* 12546: n is not aR; 12547: col outside 1..aC. */
QMML_API int QelMatrixGetColumn(const double* A, int col, double* v, int aR, int aC, int n);
QMML_API int QelMatrixSetColumn(double* A, int col, const double* v, int aR, int aC, int n);
/* 12549: n is not aC; 12550: row outside 1..aR. */
QMML_API int QelMatrixGetRow(const double* A, int row, double* v, int aR, int aC, int n);
QMML_API int QelMatrixSetRow(double* A, int row, const double* v, int aR, int aC, int n);

/* A block, from position (row, col), 0 counting as 1. A count of -1 or 0 stands for as many as there are; a larger one
 * is cut to what both arrays hold. What the block does not reach stays as it was.
 * 12550: a row outside 0..rows; 12547: a column outside 0..columns. */
QMML_API int QelMatrixExtract(const double* A, int row, int col, int nRows, int nCols, double* C, int aR, int aC,
                              int cR, int cC);
/* S and D may be the same array. */
QMML_API int QelMatrixCopy(const double* S, int sRow, int sCol, int nRows, int nCols, double* D, int dRow, int dCol,
                           int sR, int sC, int dR, int dC);
QMML_API int QelMatrixFill(double value, double* A, int row, int col, int nRows, int nCols, int aR, int aC);

QMML_API int QelMatrixDuplicate(const double* A, double* C, int aR, int aC, int cR, int cC); /* 12551: shapes differ */
QMML_API int QelMatrixSetToZero(double* A, int aR, int aC);
QMML_API int QelMatrixIdentity(double* A, int aR, int aC); /* 12555: not square */

/* C = [A B]. 12546: row counts differ; 12552: C is not aR x (aC + bC). */
QMML_API int QelMatrixCombineHoriz(const double* A, const double* B, double* C, int aR, int aC, int bR, int bC, int cR,
                                   int cC);
/* C = [A over B]. 12549: column counts differ; 12553: C is not (aR + bR) x aC. */
QMML_API int QelMatrixCombineVert(const double* A, const double* B, double* C, int aR, int aC, int bR, int bC, int cR,
                                  int cC);

/* The main diagonal, n = aR, else 12554. Beyond the last column GetDiagonal gives 0 and SetDiagonal writes nothing. */
QMML_API int QelMatrixGetDiagonal(const double* A, double* v, int aR, int aC, int n);
QMML_API int QelMatrixSetDiagonal(double* A, const double* v, int aR, int aC, int n);

/* C = A'. A and C may be the same array. 12554: C is not aC x aR. */
QMML_API int QelMatrixTranspose(const double* A, double* C, int aR, int aC, int cR, int cC);

/* ---- Element by element ---- C may be A or B. 12551: shapes differ */
QMML_API int QelMatrixAdd(const double* A, const double* B, double* C, int aR, int aC, int bR, int bC, int cR, int cC);
QMML_API int QelMatrixSubtract(const double* A, const double* B, double* C, int aR, int aC, int bR, int bC, int cR,
                               int cC);
QMML_API int QelMatrixElemAdd(const double* A, double s, double* C, int aR, int aC, int cR, int cC);
QMML_API int QelMatrixElemSubtract(const double* A, double s, double* C, int aR, int aC, int cR, int cC); /* A - s */
QMML_API int QelMatrixElemMultiply(const double* A, double s, double* C, int aR, int aC, int cR, int cC);
/* A / s. 12556: s below 1e-10 in size, or a NaN. */
QMML_API int QelMatrixElemDivide(const double* A, double s, double* C, int aR, int aC, int cR, int cC);

/* C = 1 where the tolerant comparison (qmml/missing.h) of A and B holds, else 0. IsEqual sets 12544 instead of 12551.
 */
QMML_API int QelMatrixIsLess(const double* A, const double* B, double* C, int aR, int aC, int bR, int bC, int cR,
                             int cC);
QMML_API int QelMatrixIsLessEqual(const double* A, const double* B, double* C, int aR, int aC, int bR, int bC, int cR,
                                  int cC);
QMML_API int QelMatrixIsGreater(const double* A, const double* B, double* C, int aR, int aC, int bR, int bC, int cR,
                                int cC);
QMML_API int QelMatrixIsGreaterEqual(const double* A, const double* B, double* C, int aR, int aC, int bR, int bC,
                                     int cR, int cC);
QMML_API int QelMatrixIsEqual(const double* A, const double* B, double* C, int aR, int aC, int bR, int bC, int cR,
                              int cC);
QMML_API int QelMatrixIsNotEqual(const double* A, const double* B, double* C, int aR, int aC, int bR, int bC, int cR,
                                 int cC);

/* Truth values: an element is true when it is greater than 0, so negative ones and NaNs are false. C gets 1 and 0. */
QMML_API int QelMatrixLogicalAnd(const double* A, const double* B, double* C, int aR, int aC, int bR, int bC, int cR,
                                 int cC);
QMML_API int QelMatrixLogicalOr(const double* A, const double* B, double* C, int aR, int aC, int bR, int bC, int cR,
                                int cC);
QMML_API int QelMatrixLogicalNot(const double* A, double* C, int aR, int aC, int cR, int cC);

/* ---- Of all elements ---- these two return the answer, and 0 for an array that cannot be one */
QMML_API int QelMatrixAllNonZero(const double* A, int aR, int aC); /* 1 for an empty matrix */
QMML_API int QelMatrixAnyNonZero(const double* A, int aR, int aC); /* 0 for an empty matrix */

QMML_API int QelMatrixTrace(const double* A, double* t, int aR, int aC); /* of the longest diagonal there is */
QMML_API int QelMatrixSumOfSquares(const double* A, double* s, int aR, int aC);

/* ---- Algebra ---- methods, bounds and failures of the raw entry points above */
/* C may be A. 12555: A not square; 12551: C not of its shape. */
QMML_API int QelMatrixInverse(const double* A, double* C, int aR, int aC, int cR, int cC);
/* C may be A or B. 12554: the shapes do not conform. */
QMML_API int QelMatrixMultiply(const double* A, const double* B, double* C, int aR, int aC, int bR, int bC, int cR,
                               int cC);
/* C = A (x) B. 12554: C is not (aR bR) x (aC bC). */
QMML_API int QelMatrixKroneckerMultiply(const double* A, const double* B, double* C, int aR, int aC, int bR, int bC,
                                        int cR, int cC);
/* 12555: A not square; 12560: beyond 1e150 in size. det is 0 on failure. */
QMML_API int QelMatrixDet(const double* A, double* det, int aR, int aC);
QMML_API int QelMatrixRank(const double* A, double* rank, int aR, int aC);
/* A X = B; X may be A or B. 12555: A not square; 12554: bR is not aR, or X not of B's shape. */
QMML_API int QelMatrixSolve(const double* A, const double* B, double* X, int aR, int aC, int bR, int bC, int xR,
                            int xC);
/* 12554: C is not aC x aR; 12561: kernel status 1. */
QMML_API int QelMatrixGeneralPseudoInverse(const double* A, double* C, int aR, int aC, int cR, int cC);
/* C = U; C may be A. 12555: A not square; 12551: C not of its shape. */
QMML_API int QelMatrixCholeskyDecomposition(const double* A, double* C, int aR, int aC, int cR, int cC);
/* C may be A. 12551: C not of A's shape. */
QMML_API int QelMatrixGramSchmidtOrt(const double* A, double* C, int aR, int aC, int cR, int cC);
/* count: how many eigenvalues are greater than 0. 12555: A not square; 12551: vectors not of its shape; 12554: n is not
 * its order; 12562: no convergence. */
QMML_API int QelMatrixEigenVectors(const double* A, double* values, double* vectors, double* count, int aR, int aC,
                                   int n, int vR, int vC);
QMML_API int QelMatrixEigenValues(const double* A, double* values, double* count, int aR, int aC, int n);
/* In place, on the pivots first..last, counted from 1. 12555: A not square; 12563: a pivot outside the matrix, or a
 * direction that is neither 1 nor -1. */
QMML_API int QelMatrixSweep(double* A, int first, int last, int direction, int aR, int aC);
/* aC values. 12554: n is not aC. */
QMML_API int QelMatrixSingularValues(const double* A, double* w, int aR, int aC, int n);
/* A, with rows of zeros below it where aR < aC, is U diag(w) V'. 12554: U is not max(aR, aC) x aC, n is not aC, or V
 * not of that order; 12555: V not square. */
QMML_API int QelMatrixSingularValuesDecomp(const double* A, double* U, double* w, double* V, int aR, int aC, int uR,
                                           int uC, int n, int vR, int vC);

/* Of a data matrix of dR cases and dC variables; centred 0: about the origin. 12555: the result is not square; 12554:
 * it is not of order dC; 12564: a variable without variance. */
QMML_API int QelMatrixCorrelations(const double* data, double* R, int dR, int dC, int rR, int rC, int centred);
QMML_API int QelMatrixCrossProductOfDev(const double* data, double* P, int dR, int dC, int pR, int pC, int centred);
QMML_API int QelMatrixMeans(const double* data, double* means, int dR, int dC, int n); /* 12554: n is not dC */

/* ---- Matrix file ----
 * Plain text, a line for each row, ended by CR LF, fields separated by a tab. Numbers have up to 15 significant digits
 * and the configured decimal separator (qmml/numtext.h); a missing value is ".". The number-text lock is held. */

/* Creates the file, or writes over its start: what was longer keeps its tail. 12565: it cannot be opened, and is
 * removed if it is a regular file; 12566: not all of it could be written. */
QMML_API int QelMatrixWrite(const char* file, const double* A, int aR, int aC);

/* Lines end at LF or CR and empty ones do not count; a field is a run of the characters 0-9 . + - E e with the blanks
 * around it, and any single other character separates fields. What is no number, or not there, gives 0; lines and
 * fields beyond the matrix are ignored, and so is what a line has beyond 8191 characters. An empty file gives 0 without
 * a code. 12565: it cannot be opened. */
QMML_API int QelMatrixRead(const char* file, double* A, int aR, int aC);

/* ---- Kept for old callers: they do nothing and return 1 ---- */
QMML_API int QelMatrixDisplay(const double* A, const char* title, int options, int aR, int aC);
QMML_API int QelMatrixReadFromDataFile(const char* file, const int* variables, int firstCase, int lastCase, double* A,
                                       int nVariables, int aR, int aC);
QMML_API int QelMatrixSaveAsDataFile(const char* file, const double* A, int aR, int aC);

QMML_END_C

#ifdef __cplusplus
/* The two counts of an array. */
class QMML_API CArrDim {
public:
    CArrDim(int rows, int cols = 1);

    /* Writes the rows to dims[0] and, if maxDims is at least 2, the columns to dims[1]. Returns the number of
     * dimensions: 2 when two were asked for and there are at least two columns, else 1. The array is not looked at. */
    int QMMLGetArrayDimensions(const void* array, int* dims, int maxDims) const;

private:
    int m_rows;
    int m_cols;
};
#endif

#endif
