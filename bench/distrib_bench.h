// The parameters at which every implementation of a distribution is measured. They are defined away from the peers'
// sources, so that no compiler folds them into a peer that consists of headers.
#pragma once

#include "harness.h"

namespace qmml::bench {

struct DistributionParameters {
    double beta_a, beta_b;
    double binom_p, binom_n, binom_large_n;
    double chi2_df;
    double expon_rate;
    double f_df1, f_df2;
    double gamma_shape;
    double geom_p, geom_far_p;
    double location, scale; // Cauchy, extreme value, Laplace, logistic, normal
    double lognorm_mu, lognorm_sigma;
    double pareto_shape;
    double poisson_mean;
    double range_df, range_groups;
    double rayleigh_scale;
    double student_df;
    double weibull_scale, weibull_shape, weibull_location;
};

extern const DistributionParameters distribution_parameters;

} // namespace qmml::bench
