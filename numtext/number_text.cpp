#include "core/missing.h"
#include "numtext/decimal_digits.h"
#include "numtext/format_number.h"
#include "numtext/scan_number.h"
#include "numtext/settings.h"

#include <algorithm>
#include <charconv>
#include <limits>
#include <qmml/core.h>
#include <qmml/numtext.h>

using namespace qmml;

// Guarded by the host, with IniConLock.
static unsigned short s_decimal = '.';
static char s_separator = '.'; // what numbers have of it
static struct {
    int width, digits;
} s_format = {15, 15};

static constexpr int s_default_width = 15, s_default_digits = 15, s_needed_digits = 15;

char qmml::decimal_separator() noexcept
{
    return s_separator;
}

void SetDecimalSep(unsigned short c)
{
    s_decimal = c;
    const bool digit = c >= '0' && c <= '9', visible = c > ' ' && c < 0x7F;
    s_separator = !visible || digit || c == '+' || c == '-' || c == 'e' || c == 'E' ? '.' : static_cast<char>(c);
}

void SetDecimalSepConv(unsigned short c)
{
    SetDecimalSep(c);
}

unsigned short GetDecimalSepConv(void)
{
    return s_decimal;
}

// Every selector chooses the general format.
void IniCon__(int, int width, int digits)
{
    s_format = {std::clamp(width, 0, s_widest_field), std::clamp(digits, 1, s_most_digits)};
}

int Conver__(double value, char* text)
{
    return text ? format_general(value, s_format.width, s_format.digits, decimal_separator(), text) : 0;
}

void ConInt__(int value, char* text)
{
    if (text)
        *std::to_chars(text, text + std::numeric_limits<int>::digits10 + 2, value).ptr = '\0';
}

int ConvWrapper(double value, int selector, int width, int digits, char* text)
{
    IniConLock();
    IniCon__(selector, width, digits);
    const int length = Conver__(value, text);
    IniConRelease();
    return length;
}

int ConvWrapper1(double value, char* text)
{
    return ConvWrapper(value, QMML_GENERAL_FORMAT, s_default_width, s_default_digits, text);
}

int EvalNumDig(double value)
{
    return is_finite(value) ? shortest_digits(value, s_needed_digits).count : 1;
}

int EvalDC(double value)
{
    if (!is_finite(value))
        return 0;
    const auto number = shortest_digits(value, s_needed_digits);
    return std::max(number.count - 1 - number.exponent, 0);
}

// Every mode reads the same numbers.
void Ini_GN(int) {}

int Get_NU(const char* text, double* value)
{
    double unused = 0.0;
    return text && scan_field(text, decimal_separator(), value ? *value : unused);
}

int Get_NU_EOB(const char** cursor, double* value)
{
    if (!cursor || !*cursor || !**cursor)
        return 0;
    const char* const start = Lstrpreclip(*cursor);
    ScannedNumber number = {s_missing, start};
    if (*start) {
        number = scan_number(start, decimal_separator());
        if (number.end == start)
            return 0;
    }
    *cursor = number.end;
    if (value)
        *value = number.value;
    return 1;
}
