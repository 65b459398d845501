#include "random/generator.h"

namespace qmml::generator_detail {

void initialise(RndState& record) noexcept
{
    constexpr int warm_up = 8, slots = 32;
    std::int32_t seed = negate(record.seed);
    if (seed < 1)
        seed = 1;
    record.seed2 = seed;
    for (int j = warm_up + slots - 1; j >= 0; --j) {
        seed = step_first(seed);
        if (j < slots)
            record.table[j] = seed;
    }
    record.seed = seed;
    record.last = record.table[0];
}

} // namespace qmml::generator_detail
