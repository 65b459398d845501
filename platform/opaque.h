// Arithmetic knows nothing of the floating-point unit's masks: a compiler may move it out of a guard's scope. What goes
// into the scope and what comes out of it passes through here, and keeps the arithmetic between the two in its place.
#pragma once

namespace qmml::platform {

inline double opaque(double value) noexcept
{
    asm volatile("" : "+m"(value));
    return value;
}

} // namespace qmml::platform
