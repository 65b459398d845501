#include "core/sort_kernels_impl.h"
#include "platform/simd/keys_avx512.h"

namespace qmml {

constinit const SortKernels s_sort_avx512 = sort_kernels_of<platform::Avx512Keys>();

} // namespace qmml
