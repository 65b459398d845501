#include "platform/last_error.h"

namespace qmml::platform {

constinit thread_local unsigned t_last_error = 0;

} // namespace qmml::platform
