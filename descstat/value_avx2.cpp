#include "descstat/value_kernels_impl.h"
#include "platform/simd/avx2.h"
#include "platform/simd/keys_avx2.h"

namespace qmml::descstat {

constinit const ValueKernels s_value_avx2 = value_kernels_of<platform::Avx2Lane, platform::Avx2Keys>();

} // namespace qmml::descstat
