#include "platform/simd/baseline.h"
#include "stattest/kernels_impl.h"

namespace qmml::stattest {

constinit const TestKernels s_tests_baseline = test_kernels_of<platform::BaselineLane>();

} // namespace qmml::stattest
