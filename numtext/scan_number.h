// Numbers read from text. No locale plays a part.
#pragma once

namespace qmml {

struct ScannedNumber {
    double value;
    const char* end; // behind the last character used; the start where there is no number
};

// A sign, digits with at most one separator ("." or the given one) before, among or behind them, an exponent; correctly
// rounded, out of range an infinity or zero. A "." without digits, sign and exponent is the missing value. Never "inf",
// "nan", hexadecimal, or blanks. No fault is raised, whatever is unmasked. Without an end the text ends at a zero.
ScannedNumber scan_number(const char* text, const char* end, char decimal) noexcept;
ScannedNumber scan_number(const char* text, char decimal) noexcept;

// The whole text as one number, blanks around it or nothing but blanks, which is the missing value. False, and no value
// written, if it is none.
bool scan_field(const char* text, const char* end, char decimal, double& value) noexcept;
bool scan_field(const char* text, char decimal, double& value) noexcept;

} // namespace qmml
