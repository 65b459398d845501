#include <qmml/stattest.h>

#include "core/guarded_call.h"
#include "stattest/error.h"
#include "stattest/fit.h"

using namespace qmml;
using namespace qmml::stattest;

namespace {

using Kernel = int (*)(const Observations& observations, Fitted& fitted) noexcept;

template <class Fit>
int fit_entry(Fit kernel, double* first, double* second, int* error_code) noexcept
{
    Fitted fitted;
    int error = fit::s_not_converged;
    const Outcome outcome = guarded_call([&] { return (error = kernel(fitted)) == s_success; });
    if (outcome == Outcome::fault)
        error = fit::s_not_converged;
    if (outcome == Outcome::success) {
        *first = fitted.parameters[0];
        if (second)
            *second = fitted.parameters[1];
    }
    *error_code = error;
    return outcome != Outcome::success;
}

int fit_entry(Kernel kernel, const Observations& observations, double* first, double* second, int* error_code) noexcept
{
    return fit_entry([&](Fitted& fitted) { return kernel(observations, fitted); }, first, second, error_code);
}

} // namespace

int FitNormalDistribution(int n, const double* data, double missing, double* mu, double* sigma, int* errorCode)
{
    return fit_entry(fit_normal, {data, n, missing}, mu, sigma, errorCode);
}

int FitLognormalDistribution(int n, const double* data, double missing, double* mu, double* sigma, int* errorCode)
{
    return fit_entry(fit_lognormal, {data, n, missing}, mu, sigma, errorCode);
}

int FitExponentialDistribution(int n, const double* data, double missing, double* lambda, int* errorCode)
{
    return fit_entry(fit_exponential, {data, n, missing}, lambda, nullptr, errorCode);
}

int FitRayleighDistribution(int n, const double* data, double missing, double* b, int* errorCode)
{
    return fit_entry(fit_rayleigh, {data, n, missing}, b, nullptr, errorCode);
}

int FitBetaDistribution(int n, const double* data, double missing, double* a, double* b, int* errorCode)
{
    return fit_entry(fit_beta, {data, n, missing}, a, b, errorCode);
}

int FitGammaDistribution(int n, const double* data, double missing, double* scale, double* shape, int* errorCode)
{
    return fit_entry(fit_gamma, {data, n, missing}, scale, shape, errorCode);
}

int FitExtremeDistribution(int n, const double* data, double missing, double* location, double* scale, int* errorCode)
{
    return fit_entry(fit_extreme, {data, n, missing}, location, scale, errorCode);
}

int FitWeibullDistribution(int n, const double* data, double missing, double* scale, double* shape, double* location,
                           int* errorCode)
{
    const Observations observations{data, n, missing};
    const double given = *location;
    return fit_entry([&](Fitted& fitted) { return fit_weibull(observations, given, fitted); }, scale, shape, errorCode);
}
