// The line on standard error that tells how far a long column has come.
#pragma once

#include <chrono>
#include <string>

namespace qmml::host {

// Silent unless standard error is a terminal and the work takes longer than half a second.
class Progress {
public:
    explicit Progress(const std::string& input_path);
    ~Progress() { clear(); }
    Progress(const Progress&) = delete;
    Progress& operator=(const Progress&) = delete;

    void update(unsigned long long rows, unsigned long long bytes);
    void clear(); // takes the line away

private:
    using Clock = std::chrono::steady_clock;
    const bool m_terminal;
    bool m_shown = false;
    unsigned long long m_total = 0; // 0: not known
    Clock::time_point m_next;
};

} // namespace qmml::host
