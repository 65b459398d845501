#include <qmml/core.h>

#include <atomic>

// Atomic so that a stray reader in another thread is harmless. The swap is not one step: writers take turns anyway.
static constinit std::atomic<int> s_code = 0;

int QMMLSetLastError(int code)
{
    const int previous = s_code.load(std::memory_order_relaxed);
    s_code.store(code, std::memory_order_relaxed);
    return previous;
}

int QMMLGetLastError(void)
{
    return s_code.load(std::memory_order_relaxed);
}
