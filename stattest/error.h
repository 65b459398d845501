// What the tests report in their last parameter. A kernel writes the code of each stage as it enters it, so that the
// code tells how far a call came that did not return; success is written with the results.
#pragma once

namespace qmml::stattest {

inline constexpr int s_success = 0;
inline constexpr int s_no_memory = 99;

} // namespace qmml::stattest
