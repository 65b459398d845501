#include "interp/column_kernels_impl.h"
#include "platform/cpu.h"
#include "platform/simd/avx2.h"

namespace qmml::interp {

constinit const ColumnKernels s_avx2_kernels = column_kernels_of<platform::Avx2Lane>("avx2", platform::has_avx2);

} // namespace qmml::interp
