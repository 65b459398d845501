#include "interp/column_kernels_impl.h"
#include "platform/simd/baseline.h"

namespace qmml::interp {

static bool always() noexcept
{
    return true;
}

constinit const ColumnKernels s_baseline_kernels = column_kernels_of<platform::BaselineLane>("baseline", always);

} // namespace qmml::interp
