// What the fuzz targets share.
#pragma once

#include <bit>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <memory>
#include <string>

#include <sys/mman.h>
#include <unistd.h>

namespace qmml::fuzz {

// A broken promise is a finding.
inline void require(bool kept)
{
    if (!kept)
        std::abort();
}

inline bool same_number(double a, double b) // any NaN is as good as another
{
    return std::bit_cast<std::uint64_t>(a) == std::bit_cast<std::uint64_t>(b) || (a != a && b != b);
}

// Ends where its zero does, so that reading on is noticed.
class ExactText {
public:
    ExactText(const std::uint8_t* data, std::size_t size) : m_text(std::make_unique<char[]>(size + 1))
    {
        for (std::size_t i = 0; i < size; ++i)
            m_text[i] = static_cast<char>(data[i]);
    }
    const char* get() const { return m_text.get(); }

private:
    std::unique_ptr<char[]> m_text;
};

// A file that has a name and lives in memory.
class MemoryFile {
public:
    MemoryFile() : m_descriptor(memfd_create("qmml", 0)), m_name("/proc/self/fd/" + std::to_string(m_descriptor)) {}
    MemoryFile(const std::uint8_t* data, std::size_t size) : MemoryFile()
    {
        require(write(m_descriptor, data, size) == static_cast<ssize_t>(size));
    }
    MemoryFile(const MemoryFile&) = delete;
    MemoryFile& operator=(const MemoryFile&) = delete;
    ~MemoryFile() { close(m_descriptor); }

    const char* name() const { return m_name.c_str(); }
    std::string text() const
    {
        std::string all(static_cast<std::size_t>(lseek(m_descriptor, 0, SEEK_END)), '\0');
        require(pread(m_descriptor, all.data(), all.size(), 0) == static_cast<ssize_t>(all.size()));
        return all;
    }

private:
    const int m_descriptor;
    const std::string m_name;
};

} // namespace qmml::fuzz
