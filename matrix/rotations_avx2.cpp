#include "matrix/rotations_kernels_impl.h"
#include "platform/simd/avx2.h"

namespace qmml::matrix {

constinit const RotationKernels s_rotations_avx2 = rotation_kernels_of<platform::Avx2Lane, 1>();

} // namespace qmml::matrix
