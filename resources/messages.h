// The library's own message table.
#pragma once

#include <qmml/core.h>

namespace qmml {

const QmmlModule& own_messages() noexcept;

} // namespace qmml
