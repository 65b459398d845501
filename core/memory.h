// Heap memory, zero-filled, without exceptions. Working memory inside the library is taken through core/block.h.
#pragma once

#include <cstddef>

namespace qmml {

// Null when there is no memory.
void* allocate_zeroed(std::size_t size) noexcept;
void release(void* block) noexcept;

// For tests: the n-th allocation from now fails, n counting from 1, and later ones succeed again; 0 calls it off.
// It covers the exported memory blocks of both families and all working memory.
void fail_allocation(long n) noexcept;

// Counts one allocation; true when it is the one that has to fail.
bool allocation_must_fail() noexcept;

} // namespace qmml
