/* qmml/descstat.h: descriptive statistics of a column, sorting and ranking.
 *
 * Missing values (any NaN) are skipped by the statistics and come last in a sort of either direction, their bits kept.
 * -0.0 equals 0.0.
 *
 * Failure: the result is 0 and the last error of qmml/core.h says why: 12558 no memory for a work array, 12663 a
 * percentile that cannot be computed, 12551 lengths that differ. Success leaves the last error as it was.
 *
 * No function here traps, whatever floating-point faults the caller has unmasked. */
#ifndef QMML_DESCSTAT_H
#define QMML_DESCSTAT_H

#include "qmml/export.h"

QMML_BEGIN_C

/* ---- Percentiles ----
 * Six definitions. Of n values in ascending order let x(i) be the i-th, q = p / 100, and k and f the integer part and
 * the fraction of a position; x(k) is x(1) below the first value and x(n) beyond the last.
 *
 *   1  position n q          (1 - f) x(k) + f x(k + 1)
 *   2  position n q + 1/2    x(k)
 *   3  position n q          x(k) if f is 0, else x(k + 1)
 *   4  position (n + 1) q    (1 - f) x(k) + f x(k + 1)
 *   5  position n q          (x(k) + x(k + 1)) / 2 if f is 0, else x(k + 1)
 *   6  position (n - 1) q    x(k + 1) + f (x(k + 2) - x(k + 1)) */

/* Returns 0, or 1 for a failure with the reason in *status, and *result is then not written: status 1 for n < 1, a
 * method outside 1 to 6 or a p outside 0.01 to 99.99, status 2 without memory. With sortFirst 0 the values must be in
 * ascending order. Otherwise it finds the percentile as if they were sorted, missing values counting as the highest,
 * and works on a copy: up to 8 bytes a value, much less for long arrays. */
QMML_API short ComputePercentilesEx(const double* values, int n, double* result, short method, double p, short* status,
                                    int sortFirst);
/* Sets the method that the functions below use, for the whole process and without a lock, and returns it. 0, which it
 * is at first, stands for method 3. A method outside 1 to 6 makes them fail. */
QMML_API short Func_SetPercentileMethod(short method);

/* ---- Statistics ----
 * Of the values in positions start to start + count - 1, counted from 1; a start below 1 is 1. A count of 0 or -1 goes
 * on to position 2147483647, so pass a real one; below that the range is empty. They return how many values are not
 * missing; without any, and on failure, they return 0 and the result is missing.
 *
 * Up to 512 values, sums and moments follow the textbook's recurrences. Beyond that they are taken in blocks of 512
 * and merged, always in the same order, so that the result is the same on every machine. No work array. */
QMML_API int ValCount(const double* values, int start, int count);
QMML_API int ValSum(const double* values, int start, int count, double* result);
QMML_API int ValMean(const double* values, int start, int count, double* result);
QMML_API int ValVariance(const double* values, int start, int count, double* result); /* n - 1; 0 of a single value */
QMML_API int ValStDeviation(const double* values, int start, int count, double* result);
QMML_API int ValStError(const double* values, int start, int count, double* result); /* of the mean */
QMML_API int ValMin(const double* values, int start, int count, double* result);
QMML_API int ValMax(const double* values, int start, int count, double* result);
/* These work on a copy of up to 8 bytes a value, much less for long ranges. A single value is its own median and
 * quartiles under any method. */
QMML_API int ValMedian(const double* values, int start, int count, double* result);
QMML_API int ValQuartiles(const double* values, int start, int count, double* result); /* three: 25, 50, 75 percent */
QMML_API int ValPercentile(const double* values, int start, int count, double p, double* result);
/* The most frequent value, the smallest of equally frequent ones. Sorts a copy: 8 bytes a value. */
QMML_API int ValMode(const double* values, int start, int count, double* result);

/* Other names. */
QMML_API int QelValCount(const double* values, int start, int count);
QMML_API int QelValSum(const double* values, int start, int count, double* result);
QMML_API int QelValMean(const double* values, int start, int count, double* result);
QMML_API int QelValVariance(const double* values, int start, int count, double* result);
QMML_API int QelValStDeviation(const double* values, int start, int count, double* result);
QMML_API int QelValStError(const double* values, int start, int count, double* result);
QMML_API int QelValMin(const double* values, int start, int count, double* result);
QMML_API int QelValMax(const double* values, int start, int count, double* result);
QMML_API int QelValMedian(const double* values, int start, int count, double* result);
QMML_API int QelValQuartiles(const double* values, int start, int count, double* result);
QMML_API int QelValPercentile(const double* values, int start, int count, double p, double* result);
QMML_API int QelValMode(const double* values, int start, int count, double* result);

/* Makes every value at or below the threshold missing. */
QMML_API void CleanForThreshold(int n, double* values, double threshold);
/* Count, mean and standard deviation (n - 1; 0 of a single value) of what is not missing; without values mean and sd
 * are missing. */
QMML_API void GetNormalCurveStats(const double* values, int n, int* count, double* mean, double* sd);

/* ---- Sorting and ranking ----
 * In place and without memory of their own, in time n log n whatever the data, except where a line says otherwise.
 * They return 1, or 0 on failure. ascending 0 means descending. */
QMML_API int QelVectorSort(double* values, int ascending, int n);
/* Each companion moves with its key. Companions of equal keys come in an order of their own, the same on every machine:
 * ascending, but for those of a zero beside one of the other sign and those of missing keys. */
QMML_API int DualSort(double* keys, double* companion, int n, int ascending);
QMML_API int QelVectorDualSort(double* keys, double* companion, int ascending, int nKeys, int nCompanion);
/* Replaces each value by its rank, counted from 1. Values that are equal share a rank, and so does all that is missing:
 * the lowest of their places for tieRule 0, the highest for 1, else the average. Takes 8 bytes a value. */
QMML_API int QelVectorRank(double* values, int ascending, int tieRule, int n);
/* Ascending, like QelVectorSort. */
QMML_API void SimpleDoubleSort(int n, double* values);
QMML_API void SortDoubleArray(double* values, int n);
/* Any elements, in the order of the caller's comparison: below 0, 0 or above 0 as the first one comes before, with or
 * after the second. Heap sort: equal elements in any order. A comparison that contradicts itself gives some order of
 * the same elements. */
QMML_API void HugeHeapSort(void* base, unsigned n, unsigned elementSize, int (*compare)(const void*, const void*));

QMML_END_C

#endif
