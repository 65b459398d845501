// Which instruction set the kernels of the library use: the best that the processor has, chosen once, or the one that a
// test forces. Every level gives the same bits.
#pragma once

#include <span>

namespace qmml::platform {

enum class Level { baseline, avx2, avx512 };

// Those that this processor runs, best first; the baseline is always among them.
std::span<const Level> supported_levels() noexcept;

Level level() noexcept;

// For tests: holds one level as long as it lives.
class ForcedLevel {
public:
    explicit ForcedLevel(Level level) noexcept;
    ForcedLevel(const ForcedLevel&) = delete;
    ForcedLevel& operator=(const ForcedLevel&) = delete;
    ~ForcedLevel();

private:
    const Level m_before;
};

// One set of kernels for each level.
template <class Kernels>
struct KernelSets {
    const Kernels* sets[3];

    const Kernels& operator*() const noexcept { return *sets[static_cast<int>(level())]; }
    const Kernels* operator->() const noexcept { return &**this; }
};

// A room declares its sets s_NAME_baseline, s_NAME_avx2 and s_NAME_avx512, constinit, each in a source of its own
// (qmml_add_levels in cmake/levels.cmake), and picks among them through the sets that this macro makes.
#ifdef QMML_X86_LEVELS
#define QMML_KERNEL_SETS(name)                                                                                         \
    {                                                                                                                  \
        {                                                                                                              \
            &name##_baseline, &name##_avx2, &name##_avx512                                                             \
        }                                                                                                              \
    }
#else
#define QMML_KERNEL_SETS(name)                                                                                         \
    {                                                                                                                  \
        {                                                                                                              \
            &name##_baseline, &name##_baseline, &name##_baseline                                                       \
        }                                                                                                              \
    }
#endif

} // namespace qmml::platform
