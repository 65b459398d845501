// The break check: a long computation asks at each outer step whether it is to stop. Nothing asks it to yet (lookbr
// always answers no), so what remains is one load, and a seam for the tests.
#pragma once

namespace qmml {

// For tests: the n-th check from now asks for a stop, n counting from 1; 0 calls it off.
void request_break(long n) noexcept;

namespace detail {
extern constinit long s_checks_to_break; // not atomic: a seam for one thread
bool count_break_check() noexcept;
} // namespace detail

inline bool break_requested() noexcept
{
    return detail::s_checks_to_break != 0 && detail::count_break_check();
}

} // namespace qmml
