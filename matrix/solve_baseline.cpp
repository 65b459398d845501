#include "matrix/solve_kernels_impl.h"
#include "platform/simd/baseline.h"

namespace qmml::matrix {

constinit const SolveKernels s_solve_baseline = SolveImplementation<platform::BaselineLane>::kernels;

} // namespace qmml::matrix
