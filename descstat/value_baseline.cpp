#include "descstat/value_kernels_impl.h"
#include "platform/simd/baseline.h"

namespace qmml::descstat {

constinit const ValueKernels s_value_baseline = value_kernels_of<platform::BaselineLane, ScalarKeys>();

} // namespace qmml::descstat
