#include "platform/cpu.h"

namespace qmml::platform {

#if defined(__x86_64__)

bool has_avx2() noexcept
{
    return __builtin_cpu_supports("avx2") != 0;
}

bool has_avx512() noexcept
{
    return __builtin_cpu_supports("avx512f") != 0 && __builtin_cpu_supports("avx512dq") != 0;
}

#else

bool has_avx2() noexcept
{
    return false;
}

bool has_avx512() noexcept
{
    return false;
}

#endif

} // namespace qmml::platform
