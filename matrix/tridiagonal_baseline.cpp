#include "matrix/tridiagonal_kernels_impl.h"
#include "platform/simd/baseline.h"

namespace qmml::matrix {

constinit const TridiagonalKernels s_tridiagonal_baseline =
    TridiagonalOperations<platform::BaselineLane, 3, 4, 2>::table();

} // namespace qmml::matrix
