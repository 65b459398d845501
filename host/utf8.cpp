#include "host/utf8.h"

namespace qmml::host {

// How many bytes the character at the start of the text takes, or 0 when there is none that XML allows.
static std::size_t character_length(std::string_view text)
{
    const auto byte = [&](std::size_t i) { return static_cast<unsigned char>(text[i]); };
    const unsigned char first = byte(0);
    if (first < 0x80)
        return 1;
    const std::size_t length = first >= 0xf0 ? 4 : first >= 0xe0 ? 3 : 2;
    if (first < 0xc2 || first > 0xf4 || text.size() < length)
        return 0;
    unsigned code = first & (0xffu >> (length + 1));
    for (std::size_t i = 1; i < length; ++i) {
        if ((byte(i) & 0xc0) != 0x80)
            return 0;
        code = code << 6 | (byte(i) & 0x3fu);
    }
    static constexpr unsigned s_smallest[] = {0, 0, 0x80, 0x800, 0x10000};
    const bool surrogate = code >= 0xd800 && code < 0xe000;
    return code < s_smallest[length] || code > 0x10ffff || surrogate || code == 0xfffe || code == 0xffff ? 0 : length;
}

std::string printable(std::string_view text)
{
    std::string result;
    while (!text.empty()) {
        const std::size_t length = character_length(text);
        const auto first = static_cast<unsigned char>(text[0]);
        if (length == 0)
            result += "\xef\xbf\xbd";
        else if (first < ' ' || first == 0x7f)
            result += ' ';
        else
            result += text.substr(0, length);
        text.remove_prefix(length == 0 ? 1 : length);
    }
    return result;
}

static bool starts_character(char c) noexcept
{
    return (static_cast<unsigned char>(c) & 0xc0) != 0x80;
}

std::size_t count_characters(std::string_view text) noexcept
{
    std::size_t count = 0;
    for (const char c : text)
        count += starts_character(c) ? 1 : 0;
    return count;
}

std::string shortened(std::string_view text, std::size_t most_characters)
{
    if (count_characters(text) <= most_characters)
        return std::string(text);
    std::size_t end = 0;
    for (std::size_t characters = 0; end < text.size(); ++end)
        if (starts_character(text[end]) && characters++ == most_characters - 1)
            break;
    return std::string(text.substr(0, end)) + "\xe2\x80\xa6";
}

std::string escaped(std::string_view text)
{
    std::string result;
    for (const char c : text)
        switch (c) {
        case '&': result += "&amp;"; break;
        case '<': result += "&lt;"; break;
        case '>': result += "&gt;"; break;
        case '"': result += "&quot;"; break;
        default: result += c;
        }
    return result;
}

} // namespace qmml::host
