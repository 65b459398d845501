// Maximum likelihood fits of distributions.
#pragma once

#include "core/block.h"

namespace qmml::stattest {

namespace fit {
inline constexpr int s_too_few = 1, s_no_variability = 2, s_outside_support = 3, s_not_converged = 4;
}

struct Fitted {
    double parameters[2] = {};
};

struct Observations {
    const double* data;
    int n;
    double missing;
};

// Each returns the error code, 0 for success. Parameters in the order of the distribution functions.
int fit_normal(const Observations& observations, Fitted& fitted) noexcept;
int fit_lognormal(const Observations& observations, Fitted& fitted) noexcept;
int fit_exponential(const Observations& observations, Fitted& fitted) noexcept;
int fit_rayleigh(const Observations& observations, Fitted& fitted) noexcept;
int fit_beta(const Observations& observations, Fitted& fitted) noexcept;
int fit_gamma(const Observations& observations, Fitted& fitted) noexcept;
int fit_extreme(const Observations& observations, Fitted& fitted) noexcept;
int fit_weibull(const Observations& observations, double location, Fitted& fitted) noexcept;

} // namespace qmml::stattest
