// A library of somebody else's, which happens to draw from the C runtime's generator.
#pragma once

#define RUNTIME_USER_API __attribute__((visibility("default")))

RUNTIME_USER_API void runtime_user_seed(unsigned seed);
RUNTIME_USER_API int runtime_user_next(void);
