// What only the system knows about memory.
#pragma once

#include <cstddef>

namespace qmml::platform {

// Whether size bytes from p could be written. Changes nothing there, and p may point anywhere.
bool is_writable(const void* p, std::size_t size) noexcept;

// A heap block of zeros, all of its usable size; null when there is no memory. Released by std::free.
void* allocate_zeros(std::size_t size) noexcept;

// The bytes that the heap set aside for a block; at least those that were asked for.
std::size_t usable_size(void* block) noexcept;

} // namespace qmml::platform
