// The tests' exports: the caller's arguments go to the kernels, their results come back at the end.
#include <qmml/stattest.h>

#include "core/guarded_call.h"
#include "stattest/anova.h"
#include "stattest/contingency.h"
#include "stattest/correlation.h"
#include "stattest/error.h"
#include "stattest/kolmogorov_smirnov.h"
#include "stattest/kruskal_wallis.h"
#include "stattest/lowess.h"
#include "stattest/shapiro_wilk.h"

#include <algorithm>
#include <cstdint>

using namespace qmml;
using namespace qmml::stattest;

namespace {

// 0 for success, 1 for failure and for what counts as an exception. compute(error) writes the code of each stage;
// deliver(succeeded) writes the results, and does not run after a fault.
template <class Compute, class Deliver>
int test_entry(int* error_code, Compute compute, Deliver deliver) noexcept
{
    bool succeeded = false;
    const Outcome outcome = guarded_call([&] { return succeeded = compute(*error_code); }, [&] { deliver(succeeded); });
    return outcome != Outcome::success;
}

} // namespace

int OneWayAnova__(int flags, int /*reserved*/, const double* data, int groupCount, const int* groupSizes, double* F,
                  double* dfBetween, double* dfWithin, double* p, double* leveneF, double* leveneDfBetween,
                  double* leveneDfWithin, double* leveneP, int* errorCode)
{
    Anova result;
    return test_entry(
        errorCode,
        [&](int& error) { return one_way_anova(data, groupCount, groupSizes, (flags & 1) != 0, result, error); },
        [&](bool succeeded) {
            if (!succeeded)
                return;
            *F = result.main.f;
            *dfBetween = result.main.df_between;
            *dfWithin = result.main.df_within;
            *p = result.main.p;
            *leveneF = result.levene.f;
            *leveneDfBetween = result.levene.df_between;
            *leveneDfWithin = result.levene.df_within;
            *leveneP = result.levene.p;
            *errorCode = s_success;
        });
}

int ComputeChiSquareForNbyMTable__(int /*reserved*/, int columnCount, int rowCount, const double* table,
                                   double* chiSquare, int* df, double* p, int* errorCode)
{
    ChiSquare result;
    return test_entry(
        errorCode, [&](int& error) { return chi_square_of_table(table, rowCount, columnCount, result, error); },
        [&](bool succeeded) {
            if (!succeeded)
                return;
            *chiSquare = result.chi_square;
            *df = result.df;
            *p = result.p;
            *errorCode = s_success;
        });
}

int ComputeKolmogorovSmirnovTest__(int /*reserved*/, int family, double p1, double p2, double p3, int n,
                                   const double* data, double missing, double* D, double* p, double* pLilliefors,
                                   int* errorCode)
{
    KolmogorovSmirnov result;
    return test_entry(
        errorCode,
        [&](int& error) {
            return kolmogorov_smirnov_test(data, n, missing, static_cast<std::int16_t>(family), {p1, p2, p3}, result,
                                           error);
        },
        [&](bool succeeded) {
            if (!succeeded && *errorCode != kolmogorov_smirnov::s_no_such_family)
                return;
            *D = result.distance;
            *p = result.p;
            *pLilliefors = result.p_lilliefors;
            if (succeeded)
                *errorCode = s_success;
        });
}

double KSProbabilities__(double D, double n, int mode)
{
    double result = 1, probability = 1;
    guarded_call(
        [&] {
            probability = tabulated_probability(D, n, mode);
            return true;
        },
        [&] { result = probability; });
    return result;
}

int ComputeSimpleCorrelation__(int /*reserved*/, int n, const double* x, const double* y, double missing,
                               double* interceptYX, double* slopeYX, double* interceptXY, double* slopeXY, double* r,
                               double* t, double* df, double* p, double* meanX, double* meanY, double* sdX, double* sdY,
                               double* count, int* errorCode)
{
    SimpleCorrelation result;
    return test_entry(
        errorCode, [&](int& error) { return simple_correlation(x, y, n, missing, result, error); },
        [&](bool succeeded) {
            if (!succeeded)
                return;
            *interceptYX = result.intercept_yx;
            *slopeYX = result.slope_yx;
            *interceptXY = result.intercept_xy;
            *slopeXY = result.slope_xy;
            *r = result.r;
            *t = result.t;
            *df = result.df;
            *p = result.p;
            *meanX = result.mean_x;
            *meanY = result.mean_y;
            *sdX = result.sd_x;
            *sdY = result.sd_y;
            *count = result.count;
            // The error code stays at the last stage: callers go by the result of the call.
        });
}

int ComputeMultipleCorrelation__(int flags, int n, const double* x1, const double* x2, const double* y, double missing,
                                 double* b0, double* b1, double* b2, double* R, double* F, double* df, double* p,
                                 double* meanX1, double* meanX2, double* meanY, double* sdX1, double* sdY,
                                 double* sdYAgain, double* count, int* errorCode)
{
    MultipleCorrelation result;
    return test_entry(
        errorCode,
        [&](int& error) { return multiple_correlation(x1, x2, y, n, missing, (flags & 1) != 0, result, error); },
        [&](bool succeeded) {
            if (!succeeded)
                return;
            *b0 = result.b0;
            *b1 = result.b1;
            *b2 = result.b2;
            *R = result.r;
            *F = result.f;
            *df = result.df;
            *p = result.p;
            *meanX1 = result.mean_x1;
            *meanX2 = result.mean_x2;
            *meanY = result.mean_y;
            *sdX1 = result.sd_x1;
            *sdY = result.sd_y;
            *sdYAgain = result.sd_y;
            *count = result.count;
            *errorCode = s_success;
        });
}

int WilksWTest__(int /*reserved*/, int coefficientsReady, const double* data, int n, int nUsed, double* W, double* p,
                 int* errorCode)
{
    ShapiroWilk result;
    int error = s_success; // written at the end, not stage by stage
    const bool with_coefficients = static_cast<std::int16_t>(coefficientsReady) == 0;
    return guarded_call(
               [&] {
                   error = shapiro_wilk_test(data, n, nUsed, with_coefficients, result);
                   return error == s_success;
               },
               [&] {
                   *W = result.w;
                   *p = result.p;
                   *errorCode = error;
               }) != Outcome::success;
}

int KruskalAnovaTest__(int /*reserved*/, int N, int k, int* group, double* values, double* counts, double* rankSums,
                       double* H, double* df, int* errorCode, double* p)
{
    KruskalWallis result;
    return guarded_call(
               [&] {
                   if (N < 3) {
                       *errorCode = 1;
                       return false;
                   }
                   kruskal_wallis_test(group, values, N, k, counts, rankSums, result);
                   return true;
               },
               [&] {
                   if (N < 3)
                       return;
                   *H = result.h;
                   *df = result.df;
                   *p = result.p;
               }) != Outcome::success;
}

int clowess(const double* x, const double* y, int n, double f, int nsteps, double delta, double* ys, double* rw,
            double* res, int* errorCode)
{
    if (n > s_most_points)
        return 1;
    if (n < 1) {
        *errorCode = 2;
        return 1;
    }
    *errorCode = s_success;
    if (n < 2) {
        ys[0] = y[0];
        return 0;
    }
    guarded_call([&] {
        lowess(x, y, n, f, std::clamp(nsteps, 0, 500), delta, ys, rw, res);
        return true;
    });
    return 0;
}
