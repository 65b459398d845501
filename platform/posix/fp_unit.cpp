#include "platform/fp_unit.h"

#include "platform/float_guard.h"

#include <cfenv>

namespace qmml::platform {
namespace {

struct MaskBit {
    unsigned control;
    unsigned fault;
};
constexpr MaskBit s_bits[] = {
    {control::inexact, fault::inexact},   {control::underflow, fault::underflow},
    {control::overflow, fault::overflow}, {control::divide_by_zero, fault::divide_by_zero},
    {control::invalid, fault::invalid},   {control::denormal, fault::denormal},
};

unsigned to_control(unsigned masked_faults) noexcept
{
    unsigned result = 0;
    for (const auto& bit : s_bits)
        if (masked_faults & bit.fault)
            result |= bit.control;
    return result;
}

unsigned to_faults(unsigned control_masks) noexcept
{
    unsigned result = 0;
    for (const auto& bit : s_bits)
        if (control_masks & bit.control)
            result |= bit.fault;
    return result;
}

} // namespace

#if defined(__x86_64__)
// Two units with the same fault bits: their masks are kept equal. A flag that stands raised would trap as soon as it is
// unmasked, so new masks start without flags.
unsigned exception_masks() noexcept
{
    return to_control((read_unit() & s_unit_masks) >> 7);
}

unsigned set_exception_masks(unsigned masks, unsigned which) noexcept
{
    const unsigned control_masks = (exception_masks() & ~which) | (masks & which & control::masks);
    const unsigned masked = to_faults(control_masks);
    unsigned short x87 = 0;
    asm volatile("fnstcw %0" : "=m"(x87));
    x87 = static_cast<unsigned short>((x87 & ~fault::any) | masked);
    asm volatile("fnclex\n\tfldcw %0" : : "m"(x87));
    write_unit((read_unit() & ~(s_unit_masks | fault::any)) | masked << 7);
    return control_masks;
}
#else
unsigned exception_masks() noexcept
{
    const unsigned unmasked = static_cast<unsigned>(fegetexcept());
    return to_control(
        fault::denormal | (unmasked & FE_INVALID ? 0u : fault::invalid) |
        (unmasked & FE_DIVBYZERO ? 0u : fault::divide_by_zero) | (unmasked & FE_OVERFLOW ? 0u : fault::overflow) |
        (unmasked & FE_UNDERFLOW ? 0u : fault::underflow) | (unmasked & FE_INEXACT ? 0u : fault::inexact));
}

unsigned set_exception_masks(unsigned masks, unsigned which) noexcept
{
    const unsigned masked = to_faults((exception_masks() & ~which) | (masks & which));
    std::feclearexcept(FE_ALL_EXCEPT);
    fedisableexcept(FE_ALL_EXCEPT);
    feenableexcept((masked & fault::invalid ? 0 : FE_INVALID) | (masked & fault::divide_by_zero ? 0 : FE_DIVBYZERO) |
                   (masked & fault::overflow ? 0 : FE_OVERFLOW) | (masked & fault::underflow ? 0 : FE_UNDERFLOW) |
                   (masked & fault::inexact ? 0 : FE_INEXACT));
    return exception_masks();
}
#endif

void reset_fp_unit() noexcept
{
    std::fesetenv(FE_DFL_ENV);
}

} // namespace qmml::platform
