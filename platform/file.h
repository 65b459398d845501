// Files by name, read from the front or written over.
#pragma once

#include <cstddef>

namespace qmml::platform {

class File {
public:
    enum class Access {
        read,  // a file that exists
        write, // created, or written over from its start; its length is not cut. Nobody else may be writing it
    };

    File(const char* name, Access access) noexcept; // never waits for another process; null names no file
    File(const File&) = delete;
    File& operator=(const File&) = delete;
    ~File();

    bool is_open() const noexcept { return m_handle >= 0; }
    bool in_use() const noexcept { return m_in_use; } // not opened because somebody else writes it

    std::size_t read(char* buffer, std::size_t size) noexcept; // 0 at the end, and where nothing more can be read
    bool write(const char* text, std::size_t size) noexcept;   // all of it
    bool close() noexcept;                                     // false when something written did not arrive

private:
    int m_handle = -1;
    bool m_in_use = false;
};

// Nothing else than a regular file is removed.
void remove_file(const char* name) noexcept;

} // namespace qmml::platform
