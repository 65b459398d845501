// What the processor offers beyond its baseline, the operating system agreeing.
#pragma once

namespace qmml::platform {

bool has_avx2() noexcept;
bool has_avx512() noexcept; // F and DQ

} // namespace qmml::platform
