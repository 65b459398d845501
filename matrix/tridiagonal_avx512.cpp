#include "matrix/tridiagonal_kernels_impl.h"
#include "platform/simd/avx512.h"

namespace qmml::matrix {

constinit const TridiagonalKernels s_tridiagonal_avx512 = TridiagonalOperations<platform::Avx512Lane, 3, 8, 8>::table();

} // namespace qmml::matrix
