// The text form of a matrix: a line for each row, tabs between the fields, CR LF behind each line.
#pragma once

#include "matrix/array_call.h"
#include "platform/file.h"

namespace qmml::matrix {

// False when something could not be written.
bool write_matrix(platform::File& file, const double* a, Shape shape, char decimal) noexcept;

// Fills a, which holds zeros, line by line with what the file holds; false when there was no line. The buffer has room
// for s_line_room characters.
inline constexpr int s_line_room = 8192;
bool read_matrix(platform::File& file, double* a, Shape shape, char* buffer) noexcept;

} // namespace qmml::matrix
