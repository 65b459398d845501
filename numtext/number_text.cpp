#include "core/missing.h"
#include "numtext/decimal_digits.h"
#include "numtext/format_number.h"
#include "numtext/scan_number.h"
#include "numtext/settings.h"

#include <algorithm>
#include <charconv>
#include <cstring>
#include <limits>
#include <qmml/core.h>
#include <qmml/numtext.h>

using namespace qmml;

// Guarded by the host, with IniConLock.
static unsigned short s_decimal = '.';
static struct {
    int width, digits;
} s_format = {15, 15};

static constexpr int s_default_width = 15, s_default_digits = 15, s_needed_digits = 15;

char qmml::decimal_separator() noexcept
{
    const auto c = static_cast<char>(s_decimal & 0x7F);
    const bool digit = c >= '0' && c <= '9', visible = s_decimal > ' ' && s_decimal < 0x7F;
    return !visible || digit || c == '+' || c == '-' || c == 'e' || c == 'E' ? '.' : c;
}

void SetDecimalSep(unsigned short c)
{
    s_decimal = c;
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
    s_format = {width, digits};
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
    if (!text)
        return 0;
    double number = 0.0;
    if (!scan_field(text, text + std::strlen(text), decimal_separator(), number))
        return 0;
    if (value)
        *value = number;
    return 1;
}

int Get_NU_EOB(const char** cursor, double* value)
{
    if (!cursor || !*cursor || !**cursor)
        return 0;
    const char* const start = Lstrpreclip(*cursor);
    ScannedNumber number = {s_missing, start};
    if (*start) {
        number = scan_number(start, start + std::strlen(start), decimal_separator());
        if (number.end == start)
            return 0;
    }
    *cursor = number.end;
    if (value)
        *value = number.value;
    return 1;
}
