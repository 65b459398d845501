#include "matrix/solve_kernels_impl.h"
#include "platform/simd/avx2.h"

namespace qmml::matrix {

constinit const SolveKernels s_solve_avx2 = SolveImplementation<platform::Avx2Lane>::kernels;

} // namespace qmml::matrix
