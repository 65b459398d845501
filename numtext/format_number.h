// Numbers written for people and for files.
#pragma once

namespace qmml {

inline constexpr int s_widest_field = 255;
inline constexpr int s_longest_number = 24; // -1.2345678901234567e-308

// The general format: as few digits as shortest_digits allows, fixed where that fits the width, else with an exponent,
// blanks behind it up to the width and a zero at the end. Requires a width of 0 to s_widest_field and 1 to
// s_most_digits digits. A missing value is ".", an infinity 1e999, which reads back as one. Returns the length, without
// the zero: the width, or up to s_longest_number where that is more.
int format_general(double value, int width, int digits, char decimal, char* text) noexcept;

} // namespace qmml
