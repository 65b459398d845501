// For exports that compute without telling faults: no floating-point trap that the caller has unmasked may end them.
#pragma once

#include "platform/float_guard.h"

namespace qmml {

// Runs the body, which returns void, with faults masked. A compiler knows nothing of the unit's masks: through the
// volatile pointer the body stays where it is called, its arithmetic in it.
template <class Body>
void under_guard(Body body) noexcept
{
    const platform::FloatGuard guard;
    Body* const volatile opaque = &body;
    (*opaque)();
}

} // namespace qmml
