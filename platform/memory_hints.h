// Hints about memory that is gone through once.
#pragma once

#if defined(__x86_64__) || defined(_M_X64)
#include <xmmintrin.h>
#endif

namespace qmml::platform {

inline constexpr int s_cache_line = 64;

// To be read soon. Any address will do: it never faults.
inline void prefetch(const void* address) noexcept
{
#if defined(__x86_64__) || defined(_M_X64)
    _mm_prefetch(static_cast<const char*>(address), _MM_HINT_T0);
#else
    (void)address;
#endif
}

// Behind stores that went past the caches: other threads see them in order from here on.
inline void finish_streaming() noexcept
{
#if defined(__x86_64__) || defined(_M_X64)
    _mm_sfence();
#endif
}

} // namespace qmml::platform
