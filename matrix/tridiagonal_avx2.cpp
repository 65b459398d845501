#include "matrix/tridiagonal_kernels_impl.h"
#include "platform/simd/avx2.h"

namespace qmml::matrix {

constinit const TridiagonalKernels s_tridiagonal_avx2 = TridiagonalOperations<platform::Avx2Lane, 3, 4, 4>::table();

} // namespace qmml::matrix
