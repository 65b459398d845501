// What this room exports, in front of its internal forms.
#include "platform/last_error.h"
#include "platform/separators.h"

#include <qmml/platform.h>

unsigned GetLastError(void)
{
    return qmml::platform::last_error();
}

void SetLastError(unsigned code)
{
    qmml::platform::set_last_error(code);
}

void QMMLSetSeparators(char decimal, char list)
{
    qmml::platform::override_separators(decimal, list);
}
