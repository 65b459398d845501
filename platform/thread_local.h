// How this library spells a per-thread variable on a fast path.
#pragma once

// Initial-exec: one instruction and no call. The loader then takes the whole library's per-thread storage from a small
// reserve when the library is opened at run time, so all such variables together stay below about a kilobyte.
#if defined(__GNUC__)
#define QMML_THREAD_LOCAL thread_local __attribute__((tls_model("initial-exec")))
#else
#define QMML_THREAD_LOCAL thread_local
#endif
