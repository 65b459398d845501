// The inner loops of the tests, one set per instruction set. All sets give the same bits.
#pragma once

#include "platform/levels.h"

#include <cstdint>

namespace qmml::stattest {

inline constexpr int s_moment_block = 512; // values; two passes over a block stay in the first-level cache

struct BlockMoments {
    double mean, squares; // sum of squared deviations from the mean
};

// What a local fit of a smoother reads: points in ascending order, the robustness weights or null.
struct Scatter {
    const double* x;
    const double* y;
    const double* robustness;
    double range;
};

// The neighbourhood left..right of the point to be fitted; from end on no point has any weight.
struct Window {
    std::uint16_t point, left, right, end;
};

inline constexpr int s_most_fits = 8; // side by side

struct TestKernels {
    // About the first value; the order of the sums depends on n alone. 1 <= n <= s_moment_block.
    BlockMoments (*moments)(const double* values, int n) noexcept;
    bool (*all_finite)(const double* values, int n) noexcept; // a multiple of eight
    void (*distances)(double* out, const double* values, int n, double centre) noexcept;

    // In place, for a multiple of eight.
    void (*normal_lower)(double* values, int n, double mu, double sigma) noexcept;
    // The largest distance between a distribution function at the ordered values and the steps of the sample.
    double (*largest_distance)(const double* lower_tails, int n) noexcept;

    // Blom's normal scores of the smallest n / 2 of n values; out has room for a multiple of eight.
    void (*normal_scores)(double* out, int n) noexcept;

    // Local fits side by side, each with its own sums in its own order; weights has s_most_fits entries for each point
    // between the first left and the last end. False where the weights vanish.
    int fits;
    void (*local_fits)(const Scatter& scatter, const Window* windows, double* weights, double* fitted,
                       bool* succeeded) noexcept;
};

extern const TestKernels s_tests_baseline, s_tests_avx2, s_tests_avx512;
inline constexpr platform::KernelSets<TestKernels> s_test_kernels = QMML_KERNEL_SETS(s_tests);

} // namespace qmml::stattest
