#include "distrib/studentized_range_impl.h"
#include "platform/simd/avx512.h"

namespace qmml {

constinit const StudentizedRangeKernels s_studentized_range_avx512 = {
    StudentizedRangeSum<platform::Avx512Lane>::probability};

} // namespace qmml
