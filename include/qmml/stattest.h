/* qmml/stattest.h: statistical tests, lowess smoothing, fitting of distributions. docs/tests.md has the formulas.
 *
 * Returns 0 on success, 1 on failure; *errorCode says why. A failing call leaves the results as they were and writes
 * the error code alone, except where a function says otherwise. Results are written last, in the order of the
 * parameters. "reserved" arguments are ignored.
 *
 * Error codes    0  success
 *               99  no memory
 *            other  the function's own
 *
 * Missing values. OneWayAnova__ skips every NaN. The functions that take a marker skip coded missing values (valid8 is
 * 0) and what DoubleIsEqual finds equal to the marker, unless the marker is a coded missing value itself: with the
 * plain NaN as marker every NaN is missing, otherwise a plain NaN is a value like any other and spoils the result.
 *
 * Floating-point traps may be unmasked: no call is killed by one. An invalid operation, division by zero or overflow
 * that the caller had unmasked fails the call; the error code is then that of the stage reached, or as it was.
 * clowess alone goes on as if all were masked.
 *
 * Memory on the heap, in bytes for each value: 8 for the Kolmogorov-Smirnov and Kruskal-Wallis tests, 12 for
 * Shapiro-Wilk, 8 for the fits; the row and column totals of a table; at most 256 kB for clowess; else none.
 *
 * All functions may run in several threads at once. Results do not depend on the machine. */
#ifndef QMML_STATTEST_H
#define QMML_STATTEST_H

#include "qmml/export.h"

QMML_BEGIN_C

/* One-way analysis of variance. data holds the groups one after another, groupSizes how many values each has, missing
 * ones included; a size below 1 is an empty group. Bit 0 of flags asks for Levene's test too, about the means; where
 * its degrees of freedom do not suffice, the call still succeeds with leveneF 0 and leveneP 1. Empty groups do not
 * count in dfBetween, but they do in leveneDfBetween. Groups without any variance give F by division by zero. 1 too few
 * values or groups, 2 no variability (the sums are not numbers). */
QMML_API int OneWayAnova__(int flags, int reserved, const double* data, int groupCount, const int* groupSizes,
                           double* F, double* dfBetween, double* dfWithin, double* p, double* leveneF,
                           double* leveneDfBetween, double* leveneDfWithin, double* leveneP, int* errorCode);

/* Pearson's chi-square of a rowCount x columnCount table of frequencies, row by row. Rows and columns that sum to 0
 * contribute nothing but stay in df. 1 for a total below 1 and for fewer than two rows or columns. */
QMML_API int ComputeChiSquareForNbyMTable__(int reserved, int columnCount, int rowCount, const double* table,
                                            double* chiSquare, int* df, double* p, int* errorCode);

/* One-sample Kolmogorov-Smirnov test against the lower tail of a family (its low 16 bits):
 *
 *   1 normal(p1, p2)   2 laplace(p1, p2)  3 logis(p1, p2)    4 poisson(p1)          5 geom(p1)         6 expon(p1)
 *   7 beta(p1, p2)     8 gamma: shape p2, scale p1 (0: 1)    9 lognorm(p1, p2)     10 weibull(p1, p2, p3)
 *  11 extreme(p1, p2) 12 rayleigh(p1)
 *
 * D is the largest distance, p and pLilliefors (family 1 only, else 1) come from KSProbabilities__.
 * 1 no two values differ, 2 fewer than three values, 3 no such family: then D = 0, p = 1 and pLilliefors = 1. */
QMML_API int ComputeKolmogorovSmirnovTest__(int reserved, int family, double p1, double p2, double p3, int n,
                                            const double* data, double missing, double* D, double* p,
                                            double* pLilliefors, int* errorCode);

/* The level of D in the table of Kolmogorov and Smirnov (mode 0) or Lilliefors (mode 1): the smallest of 0.01, 0.05,
 * 0.1, 0.15, 0.2 (as floats) whose critical value is below D, else 1. Modes 2 to 5 give 0.15, 0.1, 0.05, 0.01, any
 * other mode 1. */
QMML_API double KSProbabilities__(double D, double n, int mode);

/* Correlation and both regression lines of two variables over the pairs in which neither is missing. t = 0 and p = 1
 * (two-sided) where df = count - 2 is below 1 or |r| is 1.
 * 2 fewer than two pairs, 1 a variable has no variance. *errorCode is 1 after success too. */
QMML_API int ComputeSimpleCorrelation__(int reserved, int n, const double* x, const double* y, double missing,
                                        double* interceptYX, double* slopeYX, double* interceptXY, double* slopeXY,
                                        double* r, double* t, double* df, double* p, double* meanX, double* meanY,
                                        double* sdX, double* sdY, double* count, int* errorCode);

/* y = b0 + b1 x1 + b2 x2 by least squares, its multiple correlation R and F with 2 and df degrees of freedom. Bit 0 of
 * flags: through the origin, b0 = 0. sdYAgain is sdY once more; the deviation of x2 is not reported.
 * 2 fewer than three cases, 1 a variable has no variance, 3 the predictors are collinear. */
QMML_API int ComputeMultipleCorrelation__(int flags, int n, const double* x1, const double* x2, const double* y,
                                          double missing, double* b0, double* b1, double* b2, double* R, double* F,
                                          double* df, double* p, double* meanX1, double* meanX2, double* meanY,
                                          double* sdX1, double* sdY, double* sdYAgain, double* count, int* errorCode);

/* Shapiro-Wilk test after Royston, AS R94 (1995), on the nUsed smallest of n values, in any order: fewer than n
 * for a right-censored sample. coefficientsReady must be 0: otherwise (its low 16 bits) the
 * coefficients are all 0 and W is no number. W and p are written on failure too: 1 and 1, or p = -1 for code 2.
 * 1 n below 3, 2 n above 5000, 4 nUsed below 3, 5 nUsed above n, or censored with n below 20 or by more than 80 %,
 * 6 the values span less than 1e-29. */
QMML_API int WilksWTest__(int reserved, int coefficientsReady, const double* data, int n, int nUsed, double* W,
                          double* p, int* errorCode);

/* Kruskal-Wallis test. group holds indices 0 to k - 1, observations with others are ignored but for their ranks. Both
 * arrays are sorted by the values, and values then become mid-ranks. counts and rankSums have k entries. An empty group
 * and nothing but ties give H = 0. 1 for N below 3; *errorCode is not written on success. */
QMML_API int KruskalAnovaTest__(int reserved, int N, int k, int* group, double* values, double* counts,
                                double* rankSums, double* H, double* df, int* errorCode, double* p);

/* Cleveland's LOWESS (1979): locally weighted lines through the n points, x ascending, and nsteps robust iterations. f
 * is the part of the points in each fit, clamped to [1e-5, 0.99999]; nsteps is clamped to 0..500. Within delta of a
 * fitted point others are interpolated. ys receives the smoothed values, rw the robustness weights, res the residuals,
 * n each; with n = 1 only ys[0] is written. Returns 1 with code 2 for n < 1, and with the code not written for
 * n > 4000. Any x and y are survived. */
QMML_API int clowess(const double* x, const double* y, int n, double f, int nsteps, double delta, double* ys,
                     double* rw, double* res, int* errorCode);

/* Maximum likelihood fits over the values that are not missing. The parameters are those of qmml/distrib.h and
 * ComputeKolmogorovSmirnovTest__, in its order.
 *
 *   1  fewer than two values (exponential, Rayleigh: none)
 *   3  a value outside the support, or not finite; the support is x > 0 for log-normal and gamma, 0 < x < 1 for beta,
 *      x > location for Weibull, x >= 0 for exponential and Rayleigh
 *   2  all values equal (exponential, Rayleigh: all 0)
 *   4  no convergence, or a parameter out of range
 *
 * looked for in this order. Iterated parameters are good to 1e-9. */
QMML_API int FitNormalDistribution(int n, const double* data, double missing, double* mu, double* sigma,
                                   int* errorCode);
QMML_API int FitLognormalDistribution(int n, const double* data, double missing, double* mu, double* sigma,
                                      int* errorCode);
QMML_API int FitExponentialDistribution(int n, const double* data, double missing, double* lambda, int* errorCode);
QMML_API int FitRayleighDistribution(int n, const double* data, double missing, double* b, int* errorCode);
QMML_API int FitBetaDistribution(int n, const double* data, double missing, double* a, double* b, int* errorCode);
QMML_API int FitGammaDistribution(int n, const double* data, double missing, double* scale, double* shape,
                                  int* errorCode);
QMML_API int FitExtremeDistribution(int n, const double* data, double missing, double* location, double* scale,
                                    int* errorCode);
/* The location is read, not fitted: 0 for the distribution with two parameters. */
QMML_API int FitWeibullDistribution(int n, const double* data, double missing, double* scale, double* shape,
                                    double* location, int* errorCode);

QMML_END_C

#endif
