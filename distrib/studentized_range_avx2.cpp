#include "distrib/studentized_range_impl.h"
#include "platform/simd/avx2.h"

namespace qmml {

constinit const StudentizedRangeKernels s_studentized_range_avx2 = {
    StudentizedRangeSum<platform::Avx2Lane>::probability};

} // namespace qmml
