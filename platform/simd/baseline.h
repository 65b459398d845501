// The lanes that every processor of the target has.
#pragma once

#if defined(__x86_64__) || defined(_M_X64)
#include "platform/simd/sse2.h"
namespace qmml::platform {
using BaselineLane = Sse2Lane;
}
#else
#include "core/lanes.h"
namespace qmml::platform {
using BaselineLane = ScalarLane;
}
#endif
