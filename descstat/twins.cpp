// The names with the prefix Qel.
#include <qmml/descstat.h>

// clang-format off
int QelValCount(const double* values, int start, int count) { return ValCount(values, start, count); }
int QelValSum(const double* values, int start, int count, double* result) { return ValSum(values, start, count, result); }
int QelValMean(const double* values, int start, int count, double* result) { return ValMean(values, start, count, result); }
int QelValVariance(const double* values, int start, int count, double* result) { return ValVariance(values, start, count, result); }
int QelValStDeviation(const double* values, int start, int count, double* result) { return ValStDeviation(values, start, count, result); }
int QelValStError(const double* values, int start, int count, double* result) { return ValStError(values, start, count, result); }
int QelValMin(const double* values, int start, int count, double* result) { return ValMin(values, start, count, result); }
int QelValMax(const double* values, int start, int count, double* result) { return ValMax(values, start, count, result); }
int QelValMedian(const double* values, int start, int count, double* result) { return ValMedian(values, start, count, result); }
int QelValQuartiles(const double* values, int start, int count, double* result) { return ValQuartiles(values, start, count, result); }
int QelValMode(const double* values, int start, int count, double* result) { return ValMode(values, start, count, result); }
int QelValPercentile(const double* values, int start, int count, double p, double* result) { return ValPercentile(values, start, count, p, result); }
// clang-format on
