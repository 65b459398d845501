// The frame of the exports that guard a whole computation: every name that ends in "__", and the array interface.
#pragma once

#include "platform/float_guard.h"

namespace qmml {

enum class Outcome { success, failure, fault };

// Runs the computation with faults masked. Nothing escapes it: an exception is a fault, and so is a serious
// floating-point fault that the caller, however many guards away, had unmasked. After success and failure deliver()
// writes what the computation has kept back for its end. On the way out the caller's masks are back and no flag is
// raised.
//
// The computation stands in a function of its own, not inlined here: a compiler knows nothing of the unit's masks and
// would move arithmetic past them.
template <class Compute, class Deliver>
Outcome guarded_call(Compute compute, Deliver deliver) noexcept
{
    const auto attempt = [&](auto faulted) {
        try {
            const bool succeeded = compute();
            if (faulted())
                return Outcome::fault;
            deliver();
            return succeeded ? Outcome::success : Outcome::failure;
        } catch (...) {
            return Outcome::fault;
        }
    };
    // Where everything is masked and nobody outside listens, the unit is read and written once: a guard would cost more
    // than a small computation.
    if (const unsigned unit = platform::read_unit();
        (unit & platform::s_unit_masks) == platform::s_unit_masks && platform::t_guard_state == 0) [[likely]] {
        const Outcome outcome = attempt([] { return false; });
        platform::clear_old_flags();
        platform::write_unit(unit & ~platform::fault::any);
        return outcome;
    }
    platform::clear_old_flags();
    const platform::FloatGuard guard;
    return attempt([&] { return guard.faulted(platform::fault::serious); });
}

template <class Compute>
Outcome guarded_call(Compute compute) noexcept
{
    return guarded_call(compute, [] {});
}

} // namespace qmml
