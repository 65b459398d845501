#include "interp/column_kernels_impl.h"
#include "platform/cpu.h"
#include "platform/simd/avx2.h"

namespace qmml::interp {

constinit const ColumnKernels s_avx2_kernels = BlockKernels<platform::Avx2Lane>::table("avx2", platform::has_avx2);

} // namespace qmml::interp
