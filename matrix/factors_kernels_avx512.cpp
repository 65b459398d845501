#include "matrix/factors_kernels_impl.h"
#include "platform/simd/avx512.h"

namespace qmml::matrix {

constinit const FactorKernels s_factors_avx512 = factor_kernels_of<platform::Avx512Lane>();

} // namespace qmml::matrix
