// Decimal numbers in formula text.
#pragma once

namespace qmml::interp {

struct NumberText {
    double value;
    const char* end; // behind the last character used; the start where there is no number
};

// Digits, a fraction behind ".", an exponent. Independent of every locale; no sign, infinities, NaNs or hexadecimal. An
// exponent out of range gives infinity or zero.
NumberText read_number(const char* text, const char* text_end) noexcept;

} // namespace qmml::interp
