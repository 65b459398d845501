// A double as its decimal digits.
#pragma once

namespace qmml {

inline constexpr int s_most_digits = 17; // more never tell two doubles apart

// d.ddd * 10^exponent, without trailing zeros. The sign is kept elsewhere.
struct DecimalDigits {
    char digits[32]; // zeros fill it up, so that copies may be of fixed size
    int count;
    int exponent;
};

// The fewest digits that read back as |value| rounded to `limit` significant digits; ties go to the even digit of the
// exact value. A finite value stays finite: where rounding would leave the range, it is cut off instead. Requires a
// finite value and 1 <= limit <= s_most_digits.
DecimalDigits shortest_digits(double value, int limit) noexcept;

} // namespace qmml
