#include "core/memory.h"

#include "platform/memory.h"

#include <qmml/core.h>

#include <algorithm>
#include <atomic>
#include <cstdlib>
#include <cstring>

namespace qmml {
namespace {

// Allocations left until the one that fails; 0 when none is to fail.
constinit std::atomic<long> s_until_failure = 0;

} // namespace

void fail_allocation(long n) noexcept
{
    s_until_failure.store(n, std::memory_order_relaxed);
}

bool allocation_must_fail() noexcept
{
    if (s_until_failure.load(std::memory_order_relaxed) <= 0)
        return false;
    return s_until_failure.fetch_sub(1, std::memory_order_relaxed) == 1;
}

// The runtime's heap and not operator new, which a host may replace by one whose blocks cannot be asked for their size.
void* allocate_zeroed(std::size_t size) noexcept
{
    return allocation_must_fail() ? nullptr : platform::allocate_zeros(size);
}

void release(void* block) noexcept
{
    std::free(block);
}

namespace {

bool is_variable(void** block) noexcept
{
    return platform::is_writable(block, sizeof *block);
}

int allocate_into(void** block, unsigned size) noexcept
{
    if (!is_variable(block))
        return 1;
    *block = size ? allocate_zeroed(size) : nullptr;
    return size && !*block;
}

} // namespace
} // namespace qmml

int AllocMem__(void** block, unsigned size)
{
    return qmml::allocate_into(block, size);
}

int GetMem__(void** block, unsigned size)
{
    return AllocMem__(block, size);
}

void FreeMem__(void* block)
{
    qmml::release(block);
}

int ReallMem__(void** block, unsigned size)
{
    if (!qmml::is_variable(block))
        return 1;
    if (size == 0) {
        FreeMem__(*block);
        return 0;
    }
    void* const grown = qmml::allocate_zeroed(size);
    if (!grown)
        return 1;
    if (*block)
        std::memcpy(grown, *block, std::min<std::size_t>(size, qmml::platform::usable_size(*block)));
    FreeMem__(*block);
    *block = grown;
    return 0;
}

int _AllocMem_dbg(void** block, unsigned size, int, int)
{
    return qmml::allocate_into(block, size);
}

int _GetMem_dbg(void** block, unsigned size, int file, int line)
{
    return _AllocMem_dbg(block, size, file, line);
}

void _FreeMem_dbg(void* block)
{
    std::free(block);
}

int _ReallMem_dbg(void** block, unsigned size, int, int)
{
    if (!qmml::is_variable(block))
        return 1;
    if (size == 0) {
        std::free(*block);
        return 0;
    }
    // On failure the variable loses the old block: callers of this family rely on seeing null.
    *block = qmml::allocation_must_fail() ? nullptr : std::realloc(*block, size);
    return *block == nullptr;
}
