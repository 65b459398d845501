#include "platform/file.h"

#include <cerrno>
#include <csignal>
#include <ctime>
#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

namespace qmml::platform {
namespace {

// A pipe that nobody reads any more is a failed write, not the end of the process.
class PipeSignalBlock {
public:
    PipeSignalBlock() noexcept
    {
        sigset_t pending;
        ::sigemptyset(&m_signal);
        ::sigaddset(&m_signal, SIGPIPE);
        ::sigpending(&pending);
        m_ours = ::sigismember(&pending, SIGPIPE) == 0;
        ::pthread_sigmask(SIG_BLOCK, &m_signal, &m_caller);
    }
    PipeSignalBlock(const PipeSignalBlock&) = delete;
    PipeSignalBlock& operator=(const PipeSignalBlock&) = delete;
    ~PipeSignalBlock()
    {
        const timespec now = {0, 0};
        if (m_ours)
            ::sigtimedwait(&m_signal, nullptr, &now);
        ::pthread_sigmask(SIG_SETMASK, &m_caller, nullptr);
    }

private:
    sigset_t m_signal, m_caller;
    bool m_ours;
};

} // namespace

File::File(const char* name, Access access) noexcept
{
    if (name == nullptr)
        return;
    const int saved = errno;
    const int flags = access == Access::read ? O_RDONLY : O_WRONLY | O_CREAT;
    // Without O_NONBLOCK a pipe that nobody holds the other end of would keep the caller waiting.
    do
        m_handle = ::open(name, flags | O_CLOEXEC | O_NOCTTY | O_NONBLOCK, 0666);
    while (m_handle < 0 && errno == EINTR);
    struct stat status;
    if (m_handle >= 0 && ::fstat(m_handle, &status) == 0) {
        if (S_ISDIR(status.st_mode)) {
            close();
        } else {
            ::fcntl(m_handle, F_SETFL, ::fcntl(m_handle, F_GETFL) & ~O_NONBLOCK);
            if (access == Access::write && S_ISREG(status.st_mode) && ::flock(m_handle, LOCK_EX | LOCK_NB) != 0 &&
                errno == EWOULDBLOCK) {
                m_in_use = true;
                close();
            }
        }
    }
    errno = saved;
}

File::~File()
{
    close();
}

bool File::close() noexcept
{
    if (m_handle < 0)
        return true;
    const int saved = errno;
    const bool closed = ::close(m_handle) == 0 || errno == EINTR;
    m_handle = -1;
    errno = saved;
    return closed;
}

std::size_t File::read(char* buffer, std::size_t size) noexcept
{
    const int saved = errno;
    ssize_t count;
    do
        count = ::read(m_handle, buffer, size);
    while (count < 0 && errno == EINTR);
    errno = saved;
    return count < 0 ? 0 : static_cast<std::size_t>(count);
}

bool File::write(const char* text, std::size_t size) noexcept
{
    const int saved = errno;
    {
        const PipeSignalBlock block;
        while (size > 0) {
            const ssize_t count = ::write(m_handle, text, size);
            if (count < 0 && errno == EINTR)
                continue;
            if (count <= 0)
                break;
            text += count;
            size -= static_cast<std::size_t>(count);
        }
    }
    errno = saved;
    return size == 0;
}

void remove_file(const char* name) noexcept
{
    const int saved = errno;
    struct stat status;
    if (name != nullptr && ::lstat(name, &status) == 0 && S_ISREG(status.st_mode))
        ::unlink(name);
    errno = saved;
}

} // namespace qmml::platform
