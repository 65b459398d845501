#include "matrix/moments_kernels_impl.h"
#include "platform/simd/avx512.h"

namespace qmml::matrix {

constinit const MomentKernels s_moments_avx512 = moment_kernels_of<platform::Avx512Lane>();

} // namespace qmml::matrix
