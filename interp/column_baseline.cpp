#include "interp/column_kernels_impl.h"
#include "platform/simd/baseline.h"

namespace qmml::interp {

constinit const ColumnKernels s_column_baseline = column_kernels_of<platform::BaselineLane>();

} // namespace qmml::interp
