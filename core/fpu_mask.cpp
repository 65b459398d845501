#include "platform/fp_unit.h"

#include <qmml/missing.h>

unsigned SetFPUExceptionMask(void)
{
    namespace control = qmml::platform::control;
    qmml::platform::reset_fp_unit();
    return qmml::platform::set_exception_masks(control::denormal | control::underflow | control::inexact,
                                               control::masks);
}
