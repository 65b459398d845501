#include "descstat/value_kernels_impl.h"
#include "platform/simd/avx512.h"
#include "platform/simd/keys_avx512.h"

namespace qmml::descstat {

constinit const ValueKernels s_value_avx512 = value_kernels_of<platform::Avx512Lane, platform::Avx512Keys>();

} // namespace qmml::descstat
