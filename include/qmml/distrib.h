/* qmml/distrib.h: probability distributions and the special functions under them.
 *
 *   d_NAME(x, ...)  density, or probability mass where the distribution is discrete
 *   i_NAME(x, ...)  lower tail P(X <= x)
 *   v_NAME(p, ...)  quantile, 0 <= p <= 1
 *
 * d_NAME, i_NAME and v_NAME take the same parameters. Each has a capitalised twin (Normal, INormal, VNormal) that only
 * forwards. Discrete distributions round x to the nearest integer, halves away from zero.
 *
 * Failure: the result is -3.0e30 and the calling thread's last error (GetLastError) is 0x80000001. Success sets that
 * last error to 0. A function that departs from this says so.
 *
 * Parameters are checked before the support of x is looked at. An x outside the support is not a failure: the density
 * is 0, the lower tail 0 or 1. A NaN gives a NaN or a failure.
 * "Clamped": p < 0 counts as 0, p > 1 as 1.
 *
 * Floating-point faults. Invalid operation, division by zero and overflow may be unmasked (SetFPUExceptionMask): no
 * call traps, and the masks stand as before afterwards. The quantiles marked "guarded" and betai fail when the
 * computation raised such a fault that the caller had unmasked; with faults masked they return what the arithmetic
 * gives, an infinity included. The densities marked "finite" fail instead of returning an infinity or a NaN. Underflow
 * and inexact are everyday results and have to stay masked.
 *
 * Measured errors: docs/accuracy.md. */
#ifndef QMML_DISTRIB_H
#define QMML_DISTRIB_H

#include "qmml/export.h"

QMML_BEGIN_C

/* Special functions */

/* ln Gamma(x) by Lanczos' series. Fails for x <= 0. */
QMML_API double gammln(double x);

/* Engines of the incomplete gamma function to about six digits: the series for P(a, x) and the continued fraction for
 * Q(a, x), with ln Gamma(a) in *gln. They return 0, or 1 when x < 0 or 300 terms do not suffice; the ratio is then not
 * written. gser fails for x = 0 too. */
QMML_API short gser(double* gamser, double a, double x, double* gln);
QMML_API short gcf(double* gammcf, double a, double x, double* gln);

/* Q(a, x) = 1 - P(a, x) by these engines. Fails for x < 0, a <= 0, x = 0 and where they fail. */
QMML_API double gammq(double a, double x);

/* Incomplete beta ratio I_x(a, b) to about six digits. Guarded. Fails outside 0 <= x <= 1 and where the continued
 * fraction does; a and b are not checked. */
QMML_API double betai(double a, double b, double x);

/* The continued fraction of betai. Fails when 5000 steps do not suffice. */
QMML_API double betacf(double a, double b, double x);

/* n over k for 0 <= k <= n, unchecked: sums of logarithms up to 70, Stirling's formula beyond. The last error stays. */
QMML_API double fctral(int n, int k);

/* Upper tail P(F > f). df1 < 0.01, df2 < 0.01 or f <= 0: 1. */
QMML_API double xftest(double df1, double df2, double f);

/* Continuous distributions */

/* Beta, a > 0 and b > 0, support 0 < x < 1. i_beta: 0 below 1e-6, no check of a and b. d_beta: finite. */
QMML_API double d_beta(double x, double a, double b);
QMML_API double i_beta(double x, double a, double b);
QMML_API double v_beta(double p, double a, double b);
QMML_API double Beta(double x, double a, double b);
QMML_API double IBeta(double x, double a, double b);
QMML_API double VBeta(double p, double a, double b);

/* Cauchy, scale > 0. v_cauchy: guarded; p outside [0, 1] counts as 0. */
QMML_API double d_cauchy(double x, double location, double scale);
QMML_API double i_cauchy(double x, double location, double scale);
QMML_API double v_cauchy(double p, double location, double scale);
QMML_API double Cauchy(double x, double location, double scale);
QMML_API double ICauchy(double x, double location, double scale);
QMML_API double VCauchy(double p, double location, double scale);

/* Chi-square, df >= 0.01, support x > 0. d_chi2: finite. v_chi2 fails for p outside [0.000002, 0.999998]. */
QMML_API double d_chi2(double x, double df);
QMML_API double i_chi2(double x, double df);
QMML_API double v_chi2(double p, double df);
QMML_API double Chi2(double x, double df);
QMML_API double IChi2(double x, double df);
QMML_API double VChi2(double p, double df);

/* Exponential, rate lambda > 0, support x > 0: the density at 0 is 0. d_expon: finite. v_expon: guarded; p < 0 counts
 * as 0, p >= 1 fails, lambda is not checked. */
QMML_API double d_expon(double x, double lambda);
QMML_API double i_expon(double x, double lambda);
QMML_API double v_expon(double p, double lambda);
QMML_API double Expon(double x, double lambda);
QMML_API double IExpon(double x, double lambda);
QMML_API double VExpon(double p, double lambda);

/* Extreme value of the largest (Gumbel), scale > 0. d_extreme: finite, so that it fails some 709 scales below the
 * location. v_extreme: guarded, clamped; p = 0 fails, p = 1 gives +infinity. */
QMML_API double d_extreme(double x, double location, double scale);
QMML_API double i_extreme(double x, double location, double scale);
QMML_API double v_extreme(double p, double location, double scale);
QMML_API double Extreme(double x, double location, double scale);
QMML_API double IExtreme(double x, double location, double scale);
QMML_API double VExtreme(double p, double location, double scale);

/* F, support x > 0. d_f: df1 >= 1 and df2 >= 1, finite. i_f: both >= 0.01. v_f: guarded; fails for p < 0, p >= 1 or
 * df1 <= 0. */
QMML_API double d_f(double x, double df1, double df2);
QMML_API double i_f(double x, double df1, double df2);
QMML_API double v_f(double p, double df1, double df2);
QMML_API double FDistr(double x, double df1, double df2);
QMML_API double IFDistr(double x, double df1, double df2);
QMML_API double VF(double p, double df1, double df2);

/* Gamma, shape > 0, unit scale, support x > 0. d_gamma: finite. i_gamma never touches the last error; shape <= 0 gives
 * 0. v_gamma: half of v_chi2(p, 2 * shape), failing with it. */
QMML_API double d_gamma(double x, double shape);
QMML_API double i_gamma(double x, double shape);
QMML_API double v_gamma(double p, double shape);
QMML_API double Gamma(double x, double shape);
QMML_API double IGamma(double x, double shape);
QMML_API double VGamma(double p, double shape);

/* Laplace. d_laplace, i_laplace: scale > 0. v_laplace: guarded, clamped; scale is not checked and the last error stays
 * on success; infinite at p = 0 and 1. */
QMML_API double d_laplace(double x, double location, double scale);
QMML_API double i_laplace(double x, double location, double scale);
QMML_API double v_laplace(double p, double location, double scale);
QMML_API double Laplace(double x, double location, double scale);
QMML_API double ILaplace(double x, double location, double scale);
QMML_API double VLaplace(double p, double location, double scale);

/* Logistic. d_logis: scale > 0. i_logis: scale < 1e-6 gives 0; the last error stays. v_logis: guarded; p outside [0, 1]
 * counts as 0, which gives -infinity, p = 1 fails, scale is not checked. */
QMML_API double d_logis(double x, double location, double scale);
QMML_API double i_logis(double x, double location, double scale);
QMML_API double v_logis(double p, double location, double scale);
QMML_API double Logis(double x, double location, double scale);
QMML_API double ILogis(double x, double location, double scale);
QMML_API double VLogis(double p, double location, double scale);

/* Log-normal: ln X is normal(mu, sigma). d_lognorm: 0 for x <= 0 or sigma <= 0. i_lognorm: 0 below x = 1e-6, sigma is
 * not checked. v_lognorm: guarded, clamped; at p = 0 and p = 1 the quantile of the normal distribution fails, so that
 * the result is exp(-3.0e30 * sigma + mu), 0 for sigma > 0, and the last error stays 0x80000001. */
QMML_API double d_lognorm(double x, double mu, double sigma);
QMML_API double i_lognorm(double x, double mu, double sigma);
QMML_API double v_lognorm(double p, double mu, double sigma);
QMML_API double Lognorm(double x, double mu, double sigma);
QMML_API double ILognorm(double x, double mu, double sigma);
QMML_API double VLognorm(double p, double mu, double sigma);

/* Normal. d_normal checks nothing and never touches the last error. i_normal: sigma > 0; Hill's AS 66 (1973), absolute
 * error 5e-12, relative error in the lower tail 5e-11; 1 beyond mu + 7 sigma, 0 below mu - 18.66 sigma. v_normal:
 * Wichura's AS 241 (1988), clamped; p = 0 and p = 1 fail, sigma is not checked. */
QMML_API double d_normal(double x, double mu, double sigma);
QMML_API double i_normal(double x, double mu, double sigma);
QMML_API double v_normal(double p, double mu, double sigma);
QMML_API double Normal(double x, double mu, double sigma);
QMML_API double INormal(double x, double mu, double sigma);
QMML_API double VNormal(double p, double mu, double sigma);

/* Lower (upper = 0) or upper tail of the standard normal distribution; the upper tail is 1 - i_normal(x, 0, 1). */
QMML_API double alnorm(double x, short upper);

/* Pareto, shape > 0, support x >= 1. v_pareto: guarded, clamped; +infinity at p = 1. */
QMML_API double d_pareto(double x, double shape);
QMML_API double i_pareto(double x, double shape);
QMML_API double v_pareto(double p, double shape);
QMML_API double Pareto(double x, double shape);
QMML_API double IPareto(double x, double shape);
QMML_API double VPareto(double p, double shape);

/* Rayleigh, scale b > 0, support x > 0. d_rayleigh looks at x <= 0 first: 0, last error untouched. v_rayleigh: guarded,
 * clamped; +infinity at p = 1. */
QMML_API double d_rayleigh(double x, double b);
QMML_API double i_rayleigh(double x, double b);
QMML_API double v_rayleigh(double p, double b);
QMML_API double Rayleigh(double x, double b);
QMML_API double IRayleigh(double x, double b);
QMML_API double VRayleigh(double p, double b);

/* Student t. d_student: df < 1 gives 0, last error untouched; the normal density above 300 degrees. i_student:
 * df >= 0.01; the normal tail from 32000 degrees. v_student: guarded; the normal quantile above 32000 degrees. */
QMML_API double d_student(double x, double df);
QMML_API double i_student(double x, double df);
QMML_API double v_student(double p, double df);
QMML_API double Student(double x, double df);
QMML_API double IStudent(double x, double df);
QMML_API double VStudent(double p, double df);

/* Weibull, support x > location. d_weibull, i_weibull: scale > 1e-100, 0 < shape < 100. v_weibull: guarded, clamped;
 * scale > 0, shape > 0; +infinity at p = 1. */
QMML_API double d_weibull(double x, double scale, double shape, double location);
QMML_API double i_weibull(double x, double scale, double shape, double location);
QMML_API double v_weibull(double p, double scale, double shape, double location);
QMML_API double Weibull(double x, double scale, double shape, double location);
QMML_API double IWeibull(double x, double scale, double shape, double location);
QMML_API double VWeibull(double p, double scale, double shape, double location);

/* Discrete distributions */

/* Binomial: successes in n trials of probability p, 0 <= p <= 1; n is rounded and must then be at least 1. */
QMML_API double d_binom(double x, double p, double n);
QMML_API double i_binom(double x, double p, double n);
QMML_API double Binom(double x, double p, double n);
QMML_API double IBinom(double x, double p, double n);

/* Geometric: failures before the first success, 0 <= p <= 1. i_geom sums at most 2000 terms beyond the first. */
QMML_API double d_geom(double x, double p);
QMML_API double i_geom(double x, double p);
QMML_API double Geom(double x, double p);
QMML_API double IGeom(double x, double p);

/* Poisson, mean lambda > 0. */
QMML_API double d_poisson(double x, double lambda);
QMML_API double i_poisson(double x, double lambda);
QMML_API double Poisson(double x, double lambda);
QMML_API double IPoisson(double x, double lambda);

/* By number and by other ways */

/* Calls the function that code names with x and as many further doubles as that function takes (codes 20 and 21: sigma
 * alone), and stores its value in *result.
 *
 *    0 d_beta      1 i_beta     2 d_binom    3 i_binom    4 d_cauchy   5 i_cauchy   6 d_chi2      7 i_chi2
 *    8 d_expon     9 i_expon   10 d_f       11 i_f       12 d_gamma   13 i_gamma   14 d_geom     15 i_geom
 *   16 d_laplace  17 i_laplace 18 d_logis   19 i_logis   20 d_lognorm 21 i_lognorm (20, 21: mu = 0)
 *   22 d_normal   23 i_normal  24 d_pareto  25 i_pareto  26 d_poisson 27 i_poisson 28 d_student  29 i_student
 *   30 d_weibull  31 i_weibull 32 d_extreme 33 i_extreme 34 d_rayleigh 35 i_rayleigh
 *   36 d_lognorm  37 i_lognorm 38 v_beta    39 v_cauchy  40 v_chi2    41 v_expon   42 v_extreme  43 v_f
 *   44 v_gamma    45 v_laplace 46 v_logis   47 v_lognorm 48 v_normal  49 v_pareto  50 v_rayleigh 51 v_student
 *   52 v_weibull
 *
 * Returns 1 when *result is then finite and not -3.0e30, else 0; also 0, with *result as it was, when the call raised a
 * fault that the caller had unmasked. Any other code calls nothing and judges *result as it stands. A null result
 * gives 0. */
QMML_API unsigned char DistrFunct(int code, double* result, double x, ...);

/* Quantile of Student's t by minimisation, good to three digits: p = 0 gives 0, p = 1 gives 100000, p within 0.01 of
 * 0.5 gives 0. The last error is never set to the error code. */
QMML_API double invnrm(double p, int df);

/* The t >= 0 that |T| exceeds with probability p; df is truncated to an integer. 0 for df < 1, p outside (0, 1) and
 * where the search fails. The last error is never set to the error code. */
QMML_API double invistudent_t(double p, double df);

/* Studentized range
 *
 * The range of r normal means over an independent estimate of their standard deviation with v degrees of freedom. Lund
 * and Lund's AS 190 (1983): the probability is off by 1e-4 to 3e-4, up to 3e-3 for v near 1 and large q. Beyond 120
 * degrees v counts as infinite. These do not touch the last error; they store a fault code instead: 0 none; 1 v < 1 or
 * r < 2; 2 no convergence; 9 a fault inside qtrng. */

/* P(range <= q); 0 for q <= 0. */
QMML_API double prtrng(double q, double v, double r, short* fault);
/* The q with this probability: for p from 0.9 to 0.99 by secants, to 0.005 in the probability; otherwise as qinter. */
QMML_API double qtrng(double p, double v, double r, short* fault);
/* The starting value of qtrng, by a closed formula; v and r are not checked, p = 1 is fault 1. */
QMML_API double qtrngo(double p, double v, double r, short* fault);
/* By steps, the last one below 1e-5. */
QMML_API double qinter(double p, double v, double r, short* fault);

/* Tests of proportions and means
 *
 * They return 1 and store the statistic, the p-value and the status 0; or return 0 and store the status of the stage
 * that failed: 1 a proportion or a standard deviation out of range; 2 a count too small; 3 the probability. Statistic
 * and p-value are then 0 and 1 unless they had been reached. The last error is as i_normal and i_binom leave it.
 *
 * The statistic z has a standard normal distribution under the hypothesis; the p-value is the smaller tail behind it,
 * or twice that tail where oneSided is 0. */

/* phat, observed in n cases, n >= 2, against p0, 0 < p0 < 1. With oneSided 1 and normalApprox 0 the p-value is exact
 * and the statistic 0: for k = n phat, P(X <= k) where phat <= p0, else P(X > k), or 0 where k < 1. */
QMML_API int BinomialTestSingleSample(double p0, double phat, double n, int oneSided, unsigned char normalApprox,
                                      double* statistic, double* p, int* status);
/* p1 of size1 cases against p2 of size2, pooled: with a common proportion in the standard error. Status 3 also for a
 * standard error of 0. */
QMML_API int BinomialTestTwoSamples(double p1, double p2, double size1, double size2, int oneSided,
                                    unsigned char pooled, double* statistic, double* p, int* status);
/* z = (m1 - m0) / (sd / sqrt(n)). */
QMML_API int zTestSingleSampleMean(double m0, double m1, double sd, double n, int oneSided, double* statistic,
                                   double* p, int* status);
/* pooled: with a common standard deviation, which two samples of one value each do not have: z is not a number then. */
QMML_API int zTestTwoSampleMeans(double mean1, double mean2, double sd1, double sd2, double size1, double size2,
                                 int oneSided, unsigned char pooled, double* statistic, double* p, int* status);

QMML_END_C

#endif
