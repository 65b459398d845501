#include "matrix/moments_kernels_impl.h"
#include "platform/simd/avx2.h"

namespace qmml::matrix {

constinit const MomentKernels s_moments_avx2 = moment_kernels_of<platform::Avx2Lane>();

} // namespace qmml::matrix
