/* qmml/qmml.h: everything. Each family's header also stands alone. */
#ifndef QMML_QMML_H
#define QMML_QMML_H

#include "qmml/core.h"
#include "qmml/descstat.h"
#include "qmml/distrib.h"
#include "qmml/interp.h"
#include "qmml/matrix.h"
#include "qmml/missing.h"
#include "qmml/numtext.h"
#include "qmml/platform.h"
#include "qmml/random.h"
#include "qmml/stattest.h"

#endif
