#pragma once

#include <cstdint>

namespace qmml::platform {

// Milliseconds since the system started, modulo 2^32.
std::uint32_t tick_count() noexcept;

// Seconds since 1970.
std::int64_t calendar_time() noexcept;

} // namespace qmml::platform
