#include "core/sort_kernels_impl.h"

namespace qmml {

constinit const SortKernels s_sort_baseline = sort_kernels_of<ScalarKeys>();

} // namespace qmml
