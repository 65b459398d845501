#include "matrix/elimination_kernels_impl.h"
#include "platform/simd/avx512.h"

namespace qmml::matrix {

constinit const EliminationKernels s_elimination_avx512 = elimination_kernels_of<platform::Avx512Lane>();

} // namespace qmml::matrix
