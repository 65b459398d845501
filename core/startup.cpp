#include "core/startup.h"

#include "platform/clock.h"

#include <qmml/core.h>
#include <qmml/random.h>

namespace qmml {

bool start_up() noexcept
{
    inirnd_(platform::tick_count() % 10000);
    return true;
}

} // namespace qmml

// Nothing searches the library's table through a chain here: szGetStringFUNC knows where it is.
void HuxDllInitFuncs(void) {}
