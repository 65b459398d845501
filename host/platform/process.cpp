#include "host/platform/process.h"

#include <atomic>
#include <csignal>
#include <initializer_list>
#include <unistd.h>

namespace qmml::host {

static std::atomic<const char*> s_unfinished{nullptr};
static_assert(std::atomic<const char*>::is_always_lock_free); // the handler reads it

extern "C" {
static void remove_and_die(int signal_number)
{
    if (const char* path = s_unfinished.load())
        ::unlink(path);
    std::signal(signal_number, SIG_DFL);
    std::raise(signal_number);
}
}

bool is_terminal(std::FILE* stream) noexcept
{
    return ::isatty(::fileno(stream)) == 1;
}

void ignore_broken_pipes() noexcept
{
    std::signal(SIGPIPE, SIG_IGN);
}

void remove_on_interrupt(const char* path) noexcept
{
    s_unfinished.store(path);
    if (!path)
        return;
    for (int signal_number : {SIGINT, SIGTERM, SIGHUP})
        if (std::signal(signal_number, remove_and_die) == SIG_IGN) // as under nohup: stay deaf
            std::signal(signal_number, SIG_IGN);
}

} // namespace qmml::host
