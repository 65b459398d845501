#include "matrix/bidiagonal_kernels_impl.h"
#include "platform/simd/avx2.h"

namespace qmml::matrix {

constinit const BidiagonalKernels s_bidiagonal_avx2 = bidiagonal_kernels_of<platform::Avx2Lane>();

} // namespace qmml::matrix
