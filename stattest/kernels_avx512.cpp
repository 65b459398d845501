#include "platform/simd/avx512.h"
#include "stattest/kernels_impl.h"

namespace qmml::stattest {

constinit const TestKernels s_tests_avx512 = test_kernels_of<platform::Avx512Lane>();

} // namespace qmml::stattest
