#include "platform/simd/avx2.h"
#include "stattest/kernels_impl.h"

namespace qmml::stattest {

constinit const TestKernels s_tests_avx2 = test_kernels_of<platform::Avx2Lane>();

} // namespace qmml::stattest
