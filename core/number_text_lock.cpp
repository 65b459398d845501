#include <qmml/core.h>

#include <atomic>
#include <mutex>

namespace {

// Its address stands for the thread.
thread_local const char t_self = 0;

// Recursive by hand, for two things that std::recursive_mutex does not promise: it exists before any code runs, and
// a release by a thread that does not hold it is harmless.
class NumberTextLock {
public:
    constexpr NumberTextLock() noexcept = default;

    void lock() noexcept
    {
        if (!held()) {
            m_mutex.lock();
            m_owner.store(&t_self, std::memory_order_relaxed);
        }
        ++m_depth;
    }
    void unlock() noexcept
    {
        if (!held() || --m_depth > 0)
            return;
        m_owner.store(nullptr, std::memory_order_relaxed);
        m_mutex.unlock();
    }

private:
    // Only the owner can find its own address here, so the order of memory operations does not matter.
    bool held() const noexcept { return m_owner.load(std::memory_order_relaxed) == &t_self; }

    std::mutex m_mutex;
    std::atomic<const char*> m_owner = nullptr;
    unsigned m_depth = 0;
};

constinit NumberTextLock s_lock;

} // namespace

void IniConLock(void)
{
    s_lock.lock();
}

void IniConRelease(void)
{
    s_lock.unlock();
}
