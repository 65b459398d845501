#include "platform/float_guard.h"

namespace qmml::platform {

constinit thread_local unsigned t_guard_state = 0;

} // namespace qmml::platform
