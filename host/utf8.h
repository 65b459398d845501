// Text from files on its way to tables and pictures.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace qmml::host {

// Valid UTF-8 on one line, fit for XML: bytes that make no character become U+FFFD, control characters blanks.
std::string printable(std::string_view text);

// Of valid UTF-8.
std::size_t count_characters(std::string_view text) noexcept;
std::string shortened(std::string_view text, std::size_t most_characters); // ends in an ellipsis if it had to

// With &, <, > and quotes as entities.
std::string escaped(std::string_view text);

} // namespace qmml::host
