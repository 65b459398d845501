// How this family reports: the codes that it sets as the calling thread's last error.
#pragma once

#include "descstat/order_statistics.h"
#include "platform/last_error.h"

namespace qmml::descstat {

inline constexpr unsigned s_no_memory = 12558, s_lengths_differ = 12551, s_percentile_rejected = 12663;

inline int fail(unsigned code) noexcept
{
    platform::set_last_error(code);
    return 0;
}

inline int fail(Selection selection) noexcept
{
    return fail(selection == Selection::no_memory ? s_no_memory : s_percentile_rejected);
}

} // namespace qmml::descstat
