#include "matrix/factors_kernels_impl.h"
#include "platform/simd/baseline.h"

namespace qmml::matrix {

constinit const FactorKernels s_factors_baseline = factor_kernels_of<platform::BaselineLane>();

} // namespace qmml::matrix
