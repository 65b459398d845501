// The floating-point guard: a scope that runs with every fault masked and can tell what would have trapped.
#pragma once

#if defined(__x86_64__) || defined(_M_X64)
#include <xmmintrin.h>
#else
#include <cfenv>
#endif

namespace qmml::platform {

// Fault kinds, as bits of the status word.
namespace fault {
inline constexpr unsigned invalid = 0x01, denormal = 0x02, divide_by_zero = 0x04, overflow = 0x08, underflow = 0x10,
                          inexact = 0x20, any = 0x3f;
// What a computation calls an error; underflow and inexact are everyday results.
inline constexpr unsigned serious = invalid | divide_by_zero | overflow;
} // namespace fault

// Faults that the code outside the innermost guard of this thread wants to hear of, and s_guard_active while there is
// a guard: inside one the unit's own masks say nothing about the caller any more.
inline constexpr unsigned s_guard_active = 0x100;
extern constinit thread_local unsigned t_guard_state __attribute__((tls_model("initial-exec")));

#if defined(__x86_64__) || defined(_M_X64)
// MXCSR only: a few nanoseconds, where the whole environment would cost two hundred.
inline unsigned read_unit() noexcept
{
    return _mm_getcsr();
}
inline void write_unit(unsigned value) noexcept
{
    _mm_setcsr(value);
}
#else
// Elsewhere the flags come from the C library; it has no portable masks, so nothing counts as unmasked.
inline unsigned read_unit() noexcept
{
    const int raised = std::fetestexcept(FE_ALL_EXCEPT);
    return 0x1f80u | (raised & FE_INVALID ? fault::invalid : 0u) |
           (raised & FE_DIVBYZERO ? fault::divide_by_zero : 0u) | (raised & FE_OVERFLOW ? fault::overflow : 0u) |
           (raised & FE_UNDERFLOW ? fault::underflow : 0u) | (raised & FE_INEXACT ? fault::inexact : 0u);
}
inline void write_unit(unsigned value) noexcept
{
    if ((value & fault::any) == 0)
        std::feclearexcept(FE_ALL_EXCEPT);
}
#endif
inline constexpr unsigned s_unit_masks = 0x1f80;

// The faults that the caller, however many guards away, had unmasked.
inline unsigned unmasked_faults() noexcept
{
    return ((~read_unit() & s_unit_masks) >> 7 | t_guard_state) & fault::any;
}

// False when a trap has been unmasked through the C library, which changes the old unit's masks along with MXCSR: these
// are read ten times faster. No answer to who has changed MXCSR alone: for computations that cannot raise a serious
// fault.
inline bool seems_masked() noexcept
{
#if defined(__x86_64__)
    unsigned short control;
    __asm__ volatile("fnstcw %0" : "=m"(control));
    return (control & fault::any) == fault::any;
#else
    return true;
#endif
}

// The same for every fault and for the rounding, which has to be to nearest.
inline bool rounds_quietly() noexcept
{
#if defined(__x86_64__)
    constexpr unsigned rounding = 0xC00;
    unsigned short control;
    __asm__ volatile("fnstcw %0" : "=m"(control));
    return (control & (fault::any | rounding)) == fault::any;
#else
    return std::fegetround() == FE_TONEAREST;
#endif
}

// Inside a guard: whether the code outside wants to hear of any serious fault, and those it has to hear of so far.
inline bool faults_are_watched() noexcept
{
    return (t_guard_state & fault::serious) != 0;
}
inline unsigned watched_faults() noexcept
{
    return read_unit() & t_guard_state & fault::serious;
}

// The flags of the old unit, which the C library counts among those of the whole. Looking costs little, clearing a lot.
inline void clear_old_flags() noexcept
{
#if defined(__x86_64__)
    unsigned short status;
    __asm__ volatile("fnstsw %0" : "=m"(status));
    if ((status & fault::any) != 0)
        __asm__ volatile("fnclex");
#endif
}

// On the way out the caller's masks are back. The outermost guard leaves no flag raised; an inner one leaves those that
// stood before it.
class FloatGuard {
public:
    FloatGuard() noexcept : m_unit(read_unit()), m_outer(t_guard_state)
    {
        t_guard_state = m_outer | s_guard_active | (~m_unit & s_unit_masks) >> 7;
        write_unit((m_unit | s_unit_masks) & ~fault::any);
    }
    FloatGuard(const FloatGuard&) = delete;
    FloatGuard& operator=(const FloatGuard&) = delete;
    ~FloatGuard()
    {
        t_guard_state = m_outer;
        write_unit(m_outer ? m_unit : m_unit & ~fault::any);
    }

    // The faults raised so far inside the scope that the caller had asked to hear of.
    unsigned faults() const noexcept { return read_unit() & t_guard_state & fault::any; }
    bool faulted(unsigned kinds = fault::any) const noexcept { return (faults() & kinds) != 0; }

private:
    const unsigned m_unit;
    const unsigned m_outer;
};

} // namespace qmml::platform
