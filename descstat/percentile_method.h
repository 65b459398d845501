// The percentile method of the process.
#pragma once

namespace qmml::descstat {

short percentile_method() noexcept;

} // namespace qmml::descstat
