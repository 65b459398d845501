#include "interp/column_kernels_impl.h"
#include "platform/cpu.h"
#include "platform/simd/avx512.h"

namespace qmml::interp {

constinit const ColumnKernels s_avx512_kernels =
    column_kernels_of<platform::Avx512Lane>("avx512", platform::has_avx512);

} // namespace qmml::interp
