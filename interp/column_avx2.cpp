#include "interp/column_kernels_impl.h"
#include "platform/simd/avx2.h"

namespace qmml::interp {

constinit const ColumnKernels s_column_avx2 = column_kernels_of<platform::Avx2Lane>();

} // namespace qmml::interp
