#pragma once

namespace qmml {

// Blank, tab, line feed, vertical tab, form feed, carriage return; no locale adds to them.
constexpr bool is_white_space(char c) noexcept
{
    return c == ' ' || (c >= '\t' && c <= '\r');
}

constexpr char to_lower(char c) noexcept
{
    return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
}

} // namespace qmml
