#include "matrix/elimination_kernels_impl.h"
#include "platform/simd/avx2.h"

namespace qmml::matrix {

constinit const EliminationKernels s_elimination_avx2 = elimination_kernels_of<platform::Avx2Lane>();

} // namespace qmml::matrix
