#include "core/break_check.h"

namespace qmml {

constinit long detail::s_checks_to_break = 0;

void request_break(long n) noexcept
{
    detail::s_checks_to_break = n;
}

bool detail::count_break_check() noexcept
{
    return --s_checks_to_break == 0;
}

} // namespace qmml
