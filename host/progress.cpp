#include "host/progress.h"

#include "host/platform/process.h"

#include <algorithm>
#include <cstdio>
#include <filesystem>

namespace qmml::host {

using namespace std::chrono_literals;

Progress::Progress(const std::string& input_path) : m_terminal(is_terminal(stderr)), m_next(Clock::now() + 500ms)
{
    std::error_code error;
    const auto size = std::filesystem::file_size(input_path, error);
    if (!error)
        m_total = size;
}

void Progress::update(unsigned long long rows, unsigned long long bytes)
{
    if (!m_terminal || Clock::now() < m_next)
        return;
    m_next = Clock::now() + 200ms;
    m_shown = true;
    if (m_total > 0)
        std::fprintf(stderr, "\r%llu rows, %llu %%\033[K", rows, std::min(bytes, m_total) * 100 / m_total);
    else
        std::fprintf(stderr, "\r%llu rows\033[K", rows);
    std::fflush(stderr);
}

void Progress::clear()
{
    if (m_shown)
        std::fputs("\r\033[K", stderr);
    m_shown = false;
}

} // namespace qmml::host
