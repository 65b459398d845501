#include "distrib/studentized_range_impl.h"
#include "platform/simd/baseline.h"

namespace qmml {

constinit const StudentizedRangeKernels s_studentized_range_baseline = {
    StudentizedRangeSum<platform::BaselineLane>::probability};

} // namespace qmml
