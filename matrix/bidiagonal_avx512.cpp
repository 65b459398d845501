#include "matrix/bidiagonal_kernels_impl.h"
#include "platform/simd/avx512.h"

namespace qmml::matrix {

constinit const BidiagonalKernels s_bidiagonal_avx512 = bidiagonal_kernels_of<platform::Avx512Lane>();

} // namespace qmml::matrix
