#include "host/number_text.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <cstdlib>

namespace qmml::host {

std::string_view trimmed(std::string_view text)
{
    const std::size_t first = text.find_first_not_of(" \t");
    return first == text.npos ? std::string_view() : text.substr(first, text.find_last_not_of(" \t") - first + 1);
}

bool parse_number(std::string_view text, char decimal, double& value)
{
    text = trimmed(text);
    if (text.starts_with('+') && text.size() > 1 && text[1] != '-')
        text.remove_prefix(1);
    std::string neutral;
    if (decimal != '.') {
        if (text.find('.') != text.npos)
            return false;
        neutral = text;
        std::replace(neutral.begin(), neutral.end(), decimal, '.');
        text = neutral;
    }
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
    if (end != text.data() + text.size() || text.empty())
        return false;
    if (error == std::errc::result_out_of_range) // says neither which end of the range nor a value
        value = std::strtod(std::string(text).c_str(), nullptr);
    else if (error != std::errc())
        return false;
    return std::isfinite(value);
}

void append_number(std::string& text, double value, char decimal)
{
    char digits[64];
    const double size = std::fabs(value);
    const auto end = size == 0 || (size >= 1e-4 && size < 1e15)
                         ? std::to_chars(digits, digits + sizeof digits, value, std::chars_format::fixed).ptr
                         : std::to_chars(digits, digits + sizeof digits, value).ptr;
    if (decimal != '.')
        std::replace(digits, end, '.', decimal);
    text.append(digits, end);
}

} // namespace qmml::host
