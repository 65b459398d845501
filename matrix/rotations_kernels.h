// A wave of rotations over a strip of rows, one kernel per instruction set. All give the same bits.
#pragma once

#include "platform/levels.h"

#include <cstddef>

namespace qmml::matrix {

inline constexpr int s_wave_depth = 6;  // sweeps in a wave: half the columns that it holds in registers
inline constexpr int s_strip_rows = 16; // rows in a strip

// Of the pair x, y of columns a rotation makes x - coupling[0] * y and y + coupling[1] * x; in a general wave, where it
// is not said to be so simple, weight[0] * x - ... and weight[1] * y + ...
struct RotationStep {
    double coupling[s_wave_depth][2];
};
struct RotationWeights {
    double weight[s_wave_depth][2];
};

struct RotationKernels {
    // At step t sweep p rotates the columns (columns - 2 - t + 2 p) and the next one. Columns outside the matrix meet
    // no rotation. weights may be null.
    void (*apply_wave)(double* strip, std::ptrdiff_t stride, int columns, const RotationStep* steps,
                       const RotationWeights* weights, int first_step, int last_step) noexcept;
    void (*scale)(double* strip, std::ptrdiff_t stride, int columns, const double* factors) noexcept;
};

extern const RotationKernels s_rotations_baseline, s_rotations_avx2, s_rotations_avx512;
inline constexpr platform::KernelSets<RotationKernels> s_rotation_kernels = QMML_KERNEL_SETS(s_rotations);

} // namespace qmml::matrix
