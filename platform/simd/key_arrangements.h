// Tables of the permutations that bring the lanes whose bits are set to the front.
#pragma once

#include <cstdint>

namespace qmml::platform {

// Each lane is moved in a number of parts.
template <int Width, int Parts>
struct FrontLanes {
    alignas(64) std::uint8_t parts[1 << Width][Width * Parts];

    constexpr FrontLanes() noexcept : parts{}
    {
        for (int bits = 0; bits < 1 << Width; ++bits) {
            int place = 0;
            for (const int wanted : {1, 0})
                for (int lane = 0; lane < Width; ++lane)
                    if ((bits >> lane & 1) == wanted)
                        for (int part = 0; part < Parts; ++part)
                            parts[bits][place++] = static_cast<std::uint8_t>(lane * Parts + part);
        }
    }
};

} // namespace qmml::platform
