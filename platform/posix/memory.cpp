#include "platform/memory.h"

#include <cerrno>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <limits>
#include <malloc.h>
#include <unistd.h>

#if defined(__linux__)
#include <linux/futex.h>
#include <sys/syscall.h>
#endif

namespace qmml::platform {

#if defined(__linux__)
namespace {

// The kernel adds 0 to the word at the address, as one atomic operation. It reports a word that cannot be written
// instead of raising a signal, and other threads that use the word cannot notice. Nobody waits on the private word; a
// thread that waits on the probed one may be woken without cause, which every waiter has to expect.
bool is_word_writable(std::uintptr_t address) noexcept
{
    static std::uint32_t s_no_waiters = 0;
    const int saved = errno;
    const long woken = syscall(SYS_futex, &s_no_waiters, FUTEX_WAKE_OP | FUTEX_PRIVATE_FLAG, 0, nullptr, address,
                               FUTEX_OP(FUTEX_OP_ADD, 0, FUTEX_OP_CMP_EQ, 0));
    const bool writable = woken >= 0 || errno != EFAULT;
    errno = saved;
    return writable;
}

} // namespace

bool is_writable(const void* p, std::size_t size) noexcept
{
    if (!p)
        return false;
    if (size == 0)
        return true;
    const auto first = reinterpret_cast<std::uintptr_t>(p);
    if (size - 1 > std::numeric_limits<std::uintptr_t>::max() - first)
        return false;
    constexpr std::uintptr_t word = sizeof(std::uint32_t);
    static const auto s_page = static_cast<std::uintptr_t>(sysconf(_SC_PAGESIZE));
    const std::uintptr_t last_page = (first + size - 1) & ~(s_page - 1);
    if (!is_word_writable(first & ~(word - 1)))
        return false;
    for (std::uintptr_t page = first & ~(s_page - 1); page != last_page;) {
        page += s_page;
        if (!is_word_writable(page))
            return false;
    }
    return true;
}
#else
// Without a way to ask, only null is refused.
bool is_writable(const void* p, std::size_t) noexcept
{
    return p != nullptr;
}
#endif

std::size_t usable_size(void* block) noexcept
{
    return malloc_usable_size(block);
}

void* allocate_zeros(std::size_t size) noexcept
{
    void* const block = std::calloc(size, 1);
    if (block) // the heap promises zeros for what was asked only
        std::memset(static_cast<char*>(block) + size, 0, usable_size(block) - size);
    return block;
}

} // namespace qmml::platform
