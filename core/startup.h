#pragma once

namespace qmml {

// What remains to be done when the library is loaded: everything else is in place before any code runs. The generator's
// source calls it, so that a program linked to the static library cannot lack it. Always true.
bool start_up() noexcept;

} // namespace qmml
