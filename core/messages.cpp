#include "resources/messages.h"
#include "core/character.h"

#include <qmml/core.h>

#include <cstddef>
#include <cstring>
#include <string_view>

namespace qmml {
namespace {

constexpr std::size_t s_buffer_size = 1024;
constexpr unsigned s_buffer_count = 10;

char s_ring[s_buffer_count][s_buffer_size];
unsigned s_next_buffer = 0;

char* next_buffer() noexcept
{
    char* const buffer = s_ring[s_next_buffer];
    s_next_buffer = (s_next_buffer + 1) % s_buffer_count;
    return buffer;
}

const char* find(const QmmlModule* module, unsigned id) noexcept
{
    if (!module || !module->strings)
        return nullptr;
    for (unsigned i = 0; i < module->count; ++i)
        if (module->strings[i].id == id)
            return module->strings[i].text;
    return nullptr;
}

// The longest part of the text that has at most limit bytes and ends between two UTF-8 characters. In bytes that are
// no UTF-8 there is no place to look for, and the limit stands.
std::size_t fitting_length(const char* text, std::size_t limit) noexcept
{
    const void* end = std::memchr(text, 0, limit + 1);
    if (end)
        return static_cast<std::size_t>(static_cast<const char*>(end) - text);
    const auto inside_character = [&](std::size_t i) { return (static_cast<unsigned char>(text[i]) & 0xC0) == 0x80; };
    std::size_t cut = limit;
    while (cut > limit - 3 && inside_character(cut))
        --cut;
    return inside_character(cut) ? limit : cut;
}

// Marks a text that translators have to leave alone.
constexpr std::string_view s_marker = "donttranslate!!";

bool is_marked(const char* text) noexcept
{
    for (char c : s_marker)
        if (to_lower(*text++) != c)
            return false;
    return true;
}

char* load(const QmmlModule* module, unsigned id) noexcept
{
    char* const buffer = next_buffer();
    const char* const text = find(module, id);
    if (!text) {
        buffer[0] = '\0';
        return buffer;
    }
    const std::size_t length = fitting_length(text, s_buffer_size - 1);
    std::memmove(buffer, text, length); // the text may be an earlier result in this very buffer
    buffer[length] = '\0';
    if (is_marked(buffer))
        std::memmove(buffer, buffer + s_marker.size(), length - s_marker.size() + 1);
    return buffer;
}

CString as_string(const char* text) noexcept
{
    try {
        return CString(text);
    } catch (...) {
        return CString();
    }
}

} // namespace
} // namespace qmml

char* szLoadResString(const QmmlModule* module, int id)
{
    return qmml::load(module, static_cast<unsigned>(id));
}

char* szGetString(unsigned id, const QmmlModule* module)
{
    return qmml::load(module, id);
}

char* szGetStringFUNC(unsigned id)
{
    return qmml::load(&qmml::own_messages(), id);
}

char* szGetStringBuffer(void)
{
    return qmml::next_buffer();
}

CString strLoadResString(const QmmlModule* module, int id)
{
    return qmml::as_string(szLoadResString(module, id));
}

CString strGetString(unsigned id, const QmmlModule* module)
{
    return qmml::as_string(szGetString(id, module));
}

CString strGetStringFUNC(unsigned id)
{
    return qmml::as_string(szGetStringFUNC(id));
}
