// Included by one source per instruction set, each compiled for it: nothing in here may be instantiated for a type that
// two of those sources share.
#pragma once

#include "stattest/local_fit_kernels.h"
#include "stattest/moment_kernels.h"
#include "stattest/normal_kernels.h"

namespace qmml::stattest {

template <class L>
constexpr TestKernels test_kernels_of()
{
    return {
        .moments = MomentKernels<L>::moments,
        .all_finite = MomentKernels<L>::all_finite,
        .distances = MomentKernels<L>::distances,
        .normal_lower = NormalKernels<L>::lower,
        .largest_distance = NormalKernels<L>::largest_distance,
        .normal_scores = NormalKernels<L>::scores,
        .fits = LocalFitKernels<L>::s_fits,
        .local_fits = LocalFitKernels<L>::fit,
    };
}

} // namespace qmml::stattest
