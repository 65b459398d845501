#include "matrix/rotations_kernels_impl.h"
#include "platform/simd/baseline.h"

namespace qmml::matrix {

constinit const RotationKernels s_rotations_baseline = rotation_kernels_of<platform::BaselineLane, 1>();

} // namespace qmml::matrix
