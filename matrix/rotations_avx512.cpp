#include "matrix/rotations_kernels_impl.h"
#include "platform/simd/avx512.h"

namespace qmml::matrix {

constinit const RotationKernels s_rotations_avx512 = rotation_kernels_of<platform::Avx512Lane, 2>();

} // namespace qmml::matrix
