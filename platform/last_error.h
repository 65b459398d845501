// The calling thread's last-error value, which the distribution family reports through.
#pragma once

namespace qmml::platform {

// Initial-exec: one instruction and no call, since every distribution function writes it.
extern constinit thread_local unsigned t_last_error __attribute__((tls_model("initial-exec")));

inline void set_last_error(unsigned code) noexcept
{
    t_last_error = code;
}

inline unsigned last_error() noexcept
{
    return t_last_error;
}

} // namespace qmml::platform
