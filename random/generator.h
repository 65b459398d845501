// The uniform generator. P. L'Ecuyer, Efficient and portable combined random number generators, Comm. ACM 31 (1988),
// 742-751, behind the shuffle of C. Bays and S. D. Durham, ACM Trans. Math. Software 2 (1976), 59-64.
#pragma once

#include <qmml/random.h>

#include <cstdint>

namespace qmml {

// The record that draws use; never null.
extern constinit RndState* s_current_record;

namespace generator_detail {

// value * multiplier modulo 2^31 - gap, at least 0. The product folds at 2^31, where 2^31 counts as gap. A value below
// 0 is possible only in a record that a caller has filled with something else.
template <std::int64_t multiplier, std::int64_t gap>
inline std::int32_t multiply(std::int32_t value) noexcept
{
    constexpr std::int64_t modulus = (std::int64_t{1} << 31) - gap;
    const std::int64_t product = value * multiplier;
    std::int64_t folded = (product & 0x7FFFFFFF) + (product >> 31) * gap;
    if (folded < 0) [[unlikely]]
        folded += modulus;
    return static_cast<std::int32_t>(folded >= modulus ? folded - modulus : folded);
}

inline std::int32_t step_first(std::int32_t seed) noexcept
{
    return multiply<40014, 85>(seed);
}
inline std::int32_t step_second(std::int32_t seed) noexcept
{
    return multiply<40692, 249>(seed);
}

// Sums of words wrap: a record may hold anything.
inline std::int32_t add(std::int32_t a, std::int32_t b) noexcept
{
    return static_cast<std::int32_t>(static_cast<std::uint32_t>(a) + static_cast<std::uint32_t>(b));
}

inline std::int32_t negate(std::int32_t a) noexcept
{
    return static_cast<std::int32_t>(0u - static_cast<std::uint32_t>(a));
}

// For a record whose seed word asks for it.
void initialise(RndState& record) noexcept;

} // namespace generator_detail

// Draws from one record and keeps its three words in registers meanwhile; the record is up to date afterwards.
class Generator {
public:
    explicit Generator(RndState& record = *s_current_record) noexcept : m_record(record) { load(); }
    Generator(const Generator&) = delete;
    Generator& operator=(const Generator&) = delete;
    ~Generator()
    {
        m_record.seed = m_seed;
        m_record.seed2 = m_seed2;
        m_record.last = m_last;
    }

    // 1 to 2147483562.
    std::int32_t integer() noexcept
    {
        using namespace generator_detail;
        constexpr std::uint32_t slot_width = 67108862;
        if (m_seed < 1) [[unlikely]] {
            m_record.seed = m_seed;
            initialise(m_record);
            load();
        }
        m_seed = step_first(m_seed);
        m_seed2 = step_second(m_seed2);
        std::int32_t& slot = m_record.table[static_cast<std::uint32_t>(m_last) / slot_width % 32];
        m_last = add(slot, negate(m_seed2));
        slot = m_seed;
        if (m_last < 1)
            m_last = add(m_last, 2147483562);
        return m_last;
    }

    // In (0, 1).
    double uniform() noexcept
    {
        constexpr double scale = 4.656613057391769e-10, largest = 0.9999999999988;
        const double value = integer() * scale;
        return value < largest ? value : largest;
    }

private:
    void load() noexcept
    {
        m_seed = m_record.seed;
        m_seed2 = m_record.seed2;
        m_last = m_record.last;
    }

    RndState& m_record;
    std::int32_t m_seed;
    std::int32_t m_seed2;
    std::int32_t m_last;
};

} // namespace qmml
