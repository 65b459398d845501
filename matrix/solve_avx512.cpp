#include "matrix/solve_kernels_impl.h"
#include "platform/simd/avx512.h"

namespace qmml::matrix {

constinit const SolveKernels s_solve_avx512 = SolveImplementation<platform::Avx512Lane>::kernels;

} // namespace qmml::matrix
