#include "core/sort_kernels_impl.h"
#include "platform/simd/keys_avx2.h"

namespace qmml {

constinit const SortKernels s_sort_avx2 = sort_kernels_of<platform::Avx2Keys>();

} // namespace qmml
