#include "matrix/bidiagonal_kernels_impl.h"
#include "platform/simd/baseline.h"

namespace qmml::matrix {

constinit const BidiagonalKernels s_bidiagonal_baseline = bidiagonal_kernels_of<platform::BaselineLane>();

} // namespace qmml::matrix
