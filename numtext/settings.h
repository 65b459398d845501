// The process-wide settings of number text, as far as others read them.
#pragma once

namespace qmml {

// The separator that numbers are written with: the configured one, or "." where that one could not be told from the
// rest of a number.
char decimal_separator() noexcept;

} // namespace qmml
