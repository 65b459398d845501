#include "matrix/factors_kernels_impl.h"
#include "platform/simd/avx2.h"

namespace qmml::matrix {

constinit const FactorKernels s_factors_avx2 = factor_kernels_of<platform::Avx2Lane>();

} // namespace qmml::matrix
