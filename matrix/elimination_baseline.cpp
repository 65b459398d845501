#include "matrix/elimination_kernels_impl.h"
#include "platform/simd/baseline.h"

namespace qmml::matrix {

constinit const EliminationKernels s_elimination_baseline = elimination_kernels_of<platform::BaselineLane>();

} // namespace qmml::matrix
