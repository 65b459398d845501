#include "interp/range.h"

#include "core/missing.h"

#include <algorithm>

namespace qmml::interp {

// Exponents of normal numbers, with room for one rounding.
static constexpr int s_lowest = -1021, s_highest = 1023;

static constexpr Range s_unit = {0, 1, true}; // truth values and signs

static std::optional<Range> safe(Range range) noexcept
{
    if (range.low < s_lowest || range.high > s_highest)
        return std::nullopt;
    return range;
}

static bool is_exactly_zero(const Range& range) noexcept
{
    return range.zero && range.low >= range.high;
}

static int exponent_of(double v) noexcept
{
    return static_cast<int>((bits_of(v) >> 52) & 0x7ffu) - 1023;
}

bool has_range(double v) noexcept
{
    return v == 0.0 || (exponent_of(v) >= s_lowest && exponent_of(v) < s_highest);
}

Range range_of_constant(double v) noexcept
{
    return v == 0.0 ? Range{0, 0, true} : Range{exponent_of(v), exponent_of(v) + 1, false};
}

static Range hull(const Range& a, const Range& b) noexcept
{
    return {std::min(a.low, b.low), std::max(a.high, b.high), a.zero || b.zero};
}

// What is left of a difference is a multiple of the smaller operand's last place.
static Range sum(const Range& a, const Range& b) noexcept
{
    return {std::min(a.low, b.low) - 53, std::max(a.high, b.high) + 1, true};
}

static Range product(const Range& a, const Range& b) noexcept
{
    return {a.low + b.low, a.high + b.high, a.zero || b.zero};
}

// (x - mu) / sigma stays far inside the numbers for constants of moderate size.
static bool has_moderate_parameters(const double* const* constants) noexcept
{
    return constants[1] != nullptr && constants[2] != nullptr && is_calm(*constants[1]) && is_calm(*constants[2]) &&
           *constants[2] > 0.0;
}

std::optional<Range> range_of_result(Operation operation, const Range* r, const double* const* constants) noexcept
{
    switch (operation) {
    case Operation::add:
    case Operation::subtract: return safe(sum(r[0], r[1]));
    case Operation::multiply: return safe(product(r[0], r[1]));
    case Operation::divide: {
        if (is_exactly_zero(r[1]))
            return std::nullopt;
        const Range quotient = {r[0].low - r[1].high, r[0].high - r[1].low + 1, r[0].zero};
        return safe(quotient);
    }
    case Operation::power:
        if (constants[1] == nullptr || *constants[1] != 2.0)
            return std::nullopt;
        return safe(product(r[0], r[0]));
    case Operation::equal:
    case Operation::not_equal:
    case Operation::greater:
    case Operation::greater_equal:
    case Operation::less:
    case Operation::less_equal:
    case Operation::logical_and:
    case Operation::logical_or:
    case Operation::logical_not:
    case Operation::truth_and:
    case Operation::truth_or:
    case Operation::sign: return safe(s_unit);
    case Operation::minus:
    case Operation::absolute: return safe({r[0].low, r[0].high, r[0].zero});
    case Operation::truncate: return safe({0, std::max(r[0].high, 1), true});
    case Operation::minimum:
    case Operation::maximum: return safe(hull(r[0], r[1]));
    case Operation::square_root: return safe({r[0].low / 2 - 1, r[0].high / 2 + 1, r[0].zero});
    case Operation::exponential: return safe({-740, 740, false});
    case Operation::logarithm: return safe({-54, 11, true});
    case Operation::sine:
    case Operation::cosine: return safe({std::min(r[0].low, -s_calm_exponent) - 1, 1, true});
    case Operation::lower_normal: // the smallest tail that is not cut off is about 2^-257
        return has_moderate_parameters(constants) && r[0].high <= 2 * s_calm_exponent ? safe({-260, 1, true})
                                                                                      : std::nullopt;
    default: return std::nullopt;
    }
}

} // namespace qmml::interp
