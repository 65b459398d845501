// Probability integral of the studentized range: what the kernels of each instruction set are given.
#pragma once

#include "platform/levels.h"

namespace qmml {

// R. E. Lund and J. R. Lund, Algorithm AS 190, Probabilities and upper quantiles for the studentized range, Applied
// Statistics 32 (1983), 204-210; correction 34 (1985), 104. The integral over the normal variable and the logarithm of
// the standard deviation estimate is a sum over a grid of equally spaced points.
struct StudentizedRangeGrid {
    static constexpr int wing_size = 15, padded_wing = 16; // whole vectors; what is behind the wing adds nothing

    double start, step;      // of the rows
    double power, log_scale; // r - 1, and the logarithm of the common factor
    double q;
    int wings; // 2, or none without a finite number of degrees of freedom
    // The inner points: q times the standard deviation, and the logarithm of its weight.
    alignas(64) double scaled_q[2][padded_wing], log_weight[2][padded_wing];
};

struct StudentizedRangeKernels {
    double (*probability)(const StudentizedRangeGrid& grid) noexcept;
};

extern const StudentizedRangeKernels s_studentized_range_baseline, s_studentized_range_avx2, s_studentized_range_avx512;
inline constexpr platform::KernelSets<StudentizedRangeKernels> s_studentized_range_kernels =
    QMML_KERNEL_SETS(s_studentized_range);

} // namespace qmml
