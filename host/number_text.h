// Numbers as cells and arguments spell them.
#pragma once

#include <string>
#include <string_view>

namespace qmml::host {

// The whole text, blanks around it aside, is one finite decimal number. Too small a number is 0 or a denormal.
bool parse_number(std::string_view text, char decimal, double& value);

// The shortest text that reads back as the same double, without an exponent where that stays legible.
void append_number(std::string& text, double value, char decimal);

std::string_view trimmed(std::string_view text);

} // namespace qmml::host
