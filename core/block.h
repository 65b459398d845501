// Working memory: a zero-filled array that frees itself and reports a lack of memory instead of throwing.
#pragma once

#include "core/memory.h"

#include <cstddef>
#include <cstdint>
#include <type_traits>
#include <utility>

namespace qmml {

template <class T>
class Block {
    static_assert(std::is_trivially_copyable_v<T> && alignof(T) <= alignof(std::max_align_t));

public:
    Block() noexcept = default;
    // Test the block for failure afterwards. A count below 1 gives an empty block, which is no failure.
    explicit Block(std::int64_t count) noexcept { static_cast<void>(allocate(count)); }
    Block(Block&& other) noexcept
        : m_data(std::exchange(other.m_data, nullptr)), m_count(std::exchange(other.m_count, 0)),
          m_failed(std::exchange(other.m_failed, false))
    {
    }
    Block& operator=(Block&& other) noexcept
    {
        if (this != &other) {
            release(m_data);
            m_data = std::exchange(other.m_data, nullptr);
            m_count = std::exchange(other.m_count, 0);
            m_failed = std::exchange(other.m_failed, false);
        }
        return *this;
    }
    ~Block() { release(m_data); }

    // Replaces the contents; false without memory, the block then being empty.
    [[nodiscard]] bool allocate(std::int64_t count) noexcept
    {
        release(m_data);
        m_data = nullptr;
        m_count = 0;
        m_failed = false;
        if (count < 1)
            return true;
        if (static_cast<std::uint64_t>(count) <= PTRDIFF_MAX / s_element_size)
            m_data = static_cast<T*>(allocate_zeroed(static_cast<std::size_t>(count) * s_element_size));
        m_failed = m_data == nullptr;
        if (!m_failed)
            m_count = static_cast<std::size_t>(count);
        return !m_failed;
    }

    explicit operator bool() const noexcept { return !m_failed; }

    T* data() noexcept { return m_data; }
    const T* data() const noexcept { return m_data; }
    std::size_t size() const noexcept { return m_count; }
    T* begin() noexcept { return m_data; }
    T* end() noexcept { return m_data + m_count; }
    const T* begin() const noexcept { return m_data; }
    const T* end() const noexcept { return m_data + m_count; }
    T& operator[](std::size_t i) noexcept { return m_data[i]; }
    const T& operator[](std::size_t i) const noexcept { return m_data[i]; }

private:
    static constexpr std::size_t s_element_size = sizeof(T); // NOLINT(bugprone-sizeof-expression): a pointer is fine

    T* m_data = nullptr;
    std::size_t m_count = 0;
    bool m_failed = false;
};

} // namespace qmml
