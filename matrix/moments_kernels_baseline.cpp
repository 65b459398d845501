#include "matrix/moments_kernels_impl.h"
#include "platform/simd/baseline.h"

namespace qmml::matrix {

constinit const MomentKernels s_moments_baseline = moment_kernels_of<platform::BaselineLane>();

} // namespace qmml::matrix
