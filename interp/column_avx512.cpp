#include "interp/column_kernels_impl.h"
#include "platform/simd/avx512.h"

namespace qmml::interp {

constinit const ColumnKernels s_column_avx512 = column_kernels_of<platform::Avx512Lane>();

} // namespace qmml::interp
