#include "core/character.h"

#include <qmml/core.h>

#include <algorithm>
#include <climits>
#include <cstddef>
#include <cstring>

namespace {

std::size_t length(const char* text) noexcept
{
    return text ? std::strlen(text) : 0;
}

std::size_t length(const char* text, int limit) noexcept
{
    if (!text || limit < 1)
        return 0;
    const void* end = std::memchr(text, 0, static_cast<std::size_t>(limit));
    return static_cast<std::size_t>(end ? static_cast<const char*>(end) - text : limit);
}

// The source may overlap the destination, as when a text is cut in place.
void move_text(char* dst, const char* src, std::size_t count) noexcept
{
    if (count)
        std::memmove(dst, src, count);
}

void fill_field(char* dst, const char* src, std::size_t characters, int field) noexcept
{
    move_text(dst, src, characters);
    std::memset(dst + characters, 0, static_cast<std::size_t>(field) - characters);
}

} // namespace

char* Lstrcpyn(char* dst, const char* src, int n)
{
    if (!dst || n < 1)
        return dst;
    fill_field(dst, src, length(src, n - 1), n);
    return dst;
}

char* Lstrcpynz(char* dst, const char* src, int& n)
{
    if (!dst || n < 1) {
        n = 0;
        return dst;
    }
    const std::size_t copied = length(src, n);
    fill_field(dst, src, copied, n);
    n = static_cast<int>(copied);
    return dst;
}

char* Lstrncat(char* dst, const char* src, int n)
{
    if (!dst || n < 2)
        return dst;
    char* const end = dst + length(dst);
    const std::size_t appended = length(src, n - 1);
    move_text(end, src, appended);
    end[appended] = '\0';
    end[n - 1] = '\0';
    return dst;
}

char* Lstrncatz(char* dst, const char* src, int& n)
{
    const std::size_t before = length(dst);
    std::size_t appended = 0;
    if (dst && n > 0) {
        appended = length(src, n);
        move_text(dst + before, src, appended);
        dst[before + appended] = '\0';
    }
    n = static_cast<int>(std::min<std::size_t>(before + appended, INT_MAX));
    return dst;
}

char* Lstrpreclip(const char* s)
{
    while (s && qmml::is_white_space(*s))
        ++s;
    return const_cast<char*>(s);
}

char* Lstrclip(char* s)
{
    if (!s)
        return s;
    char* end = s + std::strlen(s);
    while (end != s && qmml::is_white_space(end[-1]))
        --end;
    *end = '\0';
    return s;
}
