#include "platform/levels.h"

#include "platform/cpu.h"

#include <array>

namespace qmml::platform {

std::span<const Level> supported_levels() noexcept
{
    static constexpr std::array s_levels = {Level::avx512, Level::avx2, Level::baseline};
    return std::span(s_levels).subspan(has_avx512() ? 0 : has_avx2() ? 1 : 2);
}

// The processor is asked when the library is loaded; before that, the baseline serves.
static Level s_level = supported_levels().front();

Level level() noexcept
{
    return s_level;
}

ForcedLevel::ForcedLevel(Level level) noexcept : m_before(s_level)
{
    s_level = level;
}

ForcedLevel::~ForcedLevel()
{
    s_level = m_before;
}

} // namespace qmml::platform
