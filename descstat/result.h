// How this family reports: the codes that it sets as the last error.
#pragma once

#include "descstat/order_statistics.h"

#include <qmml/core.h>

namespace qmml::descstat {

inline constexpr int s_no_memory = 12558, s_lengths_differ = 12551, s_percentile_rejected = 12663;

inline int fail(int code) noexcept
{
    QMMLSetLastError(code);
    return 0;
}

inline int fail(Selection selection) noexcept
{
    return fail(selection == Selection::no_memory ? s_no_memory : s_percentile_rejected);
}

} // namespace qmml::descstat
