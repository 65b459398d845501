// Words of a text whose end is not known yet. What lies behind the end is read, and never used.
#pragma once

#include <cstddef>
#include <cstdint>

namespace qmml::platform {

// Memory is mapped by the page, the smallest of which is this large: reading on within one cannot fault.
constexpr bool in_one_page(std::uintptr_t address, std::size_t size) noexcept
{
    constexpr std::uintptr_t page = 4096;
    return (address & (page - 1)) <= page - size;
}

// Requires that the first of the bytes may be read.
inline bool may_read_ahead(const char* text, std::size_t size) noexcept
{
    return in_one_page(reinterpret_cast<std::uintptr_t>(text), size);
}

// Requires may_read_ahead. The address sanitizer would object to what is on purpose here.
__attribute__((no_sanitize("address", "undefined"))) inline std::uint64_t read_ahead(const char* text) noexcept
{
    struct __attribute__((packed, may_alias)) Word {
        std::uint64_t value;
    };
    return reinterpret_cast<const Word*>(text)->value;
}

} // namespace qmml::platform
