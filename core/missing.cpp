#include "core/missing.h"

#include <qmml/missing.h>

constinit double CNAN::m_dNAN = qmml::s_missing;
constinit float CNAN::m_fNAN = std::bit_cast<float>(qmml::s_missing_float_bits);

CNAN::CNAN()
{
    static constexpr unsigned char bNAN[] = {0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0xF8, 0x7F};
    std::uint64_t bits = 0;
    for (int i = 0; i < 8; ++i)
        bits |= std::uint64_t{bNAN[i]} << (8 * i);
    m_dNAN = std::bit_cast<double>(bits);
    m_fNAN = std::bit_cast<float>(qmml::s_missing_float_bits);
}

CNAN& CNAN::operator=(const CNAN&) = default;

namespace {

// A coded value is all ones in the low word; the high word, read as a signed number, is the code negated.
struct Coded {
    bool marked;
    std::int32_t high;
};

Coded decode(double value) noexcept
{
    const std::uint64_t bits = qmml::bits_of(value);
    return {static_cast<std::uint32_t>(bits) == 0xFFFFFFFFu, static_cast<std::int32_t>(bits >> 32)};
}

} // namespace

int IsNaN(const double* v)
{
    return v && qmml::is_nan(*v);
}

void setNaN(double* v)
{
    if (v)
        qmml::set_nan(*v);
}

int IsNan(const double* v)
{
    return IsNaN(v);
}

void SetNan(double* v)
{
    setNaN(v);
}

int IsNan(const float* v)
{
    return qmml::bits_of(*v) == qmml::s_missing_float_bits;
}

void SetNan(float* v)
{
    *v = std::bit_cast<float>(qmml::s_missing_float_bits);
}

void NANSet(short code, double* v)
{
    if (!v)
        return;
    const auto high = static_cast<std::uint32_t>(-std::int32_t{code});
    *v = std::bit_cast<double>(std::uint64_t{high} << 32 | 0xFFFFFFFFu);
}

int NAN_Test(double v)
{
    const Coded coded = decode(v);
    return coded.marked && coded.high >= -9 && coded.high <= -1 ? -coded.high : 0;
}

int valid8(const double* v)
{
    if (!v)
        return 0;
    const Coded coded = decode(*v);
    return !(coded.marked && coded.high >= -10 && coded.high <= -1);
}
