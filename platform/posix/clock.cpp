#include "platform/clock.h"

#include <ctime>

namespace qmml::platform {

std::uint32_t tick_count() noexcept
{
#if defined(CLOCK_BOOTTIME)
    constexpr clockid_t clock = CLOCK_BOOTTIME; // goes on while the machine sleeps
#else
    constexpr clockid_t clock = CLOCK_MONOTONIC;
#endif
    timespec now = {};
    clock_gettime(clock, &now);
    return static_cast<std::uint32_t>(std::int64_t(now.tv_sec) * 1000 + now.tv_nsec / 1000000);
}

std::int64_t calendar_time() noexcept
{
    return std::time(nullptr);
}

} // namespace qmml::platform
