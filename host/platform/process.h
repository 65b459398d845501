// What the command needs of the operating system beyond the standard library.
#pragma once

#include <cstdio>

namespace qmml::host {

bool is_terminal(std::FILE* stream) noexcept;

// Writing to a pipe that nobody reads becomes an error of the write instead of the end of the process.
void ignore_broken_pipes() noexcept;

// The file is deleted when a signal ends the process; null for none. The text must live until the next call.
void remove_on_interrupt(const char* path) noexcept;

} // namespace qmml::host
