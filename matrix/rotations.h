// Plane rotations of neighbouring columns, kept back for a while and then applied many sweeps at a time, so that the
// columns are read from memory once for all of them.
#pragma once

#include "core/block.h"
#include "matrix/rotations_kernels.h"

#include <cmath>
#include <cstddef>

namespace qmml::matrix {

// A sweep rotates the pairs of columns (i, i + 1) one after the other:
//     column i     = cosine * column i - sine * column i+1
//     column i + 1 = sine * column i + cosine * column i+1
// In a queue that goes down i descends within a sweep, in one that goes up it ascends. A sweep begins with begin() and
// sets every rotation of the range that it has announced, in its order, (1, 0) being none. The columns are not what
// they should be before flush().
class RotationQueue {
public:
    enum class Direction { down, up };

    // The matrix has columns columns of rows numbers, column k at z + k * ld. False: out of memory.
    [[nodiscard]] bool attach(double* z, int rows, std::ptrdiff_t ld, int columns, Direction direction) noexcept;

    // A sweep over the pairs first..last, 0 <= first <= last <= columns - 2.
    void begin(int first, int last) noexcept;
    void set(int i, double cosine, double sine) noexcept;
    void flush() noexcept;

private:
    static constexpr int s_waves = 5;

    // Sweep p of a wave rotates, at step t, the pair last_pair - t + 2 p: two behind the sweep before it.
    struct Steps {
        int first, last;
    };
    struct Wave {
        int sweeps;
        Steps all;
        bool general;
    };

    std::ptrdiff_t steps_in_wave() const noexcept { return m_columns + std::ptrdiff_t{2} * s_wave_depth; }
    void set_general(std::ptrdiff_t step, double cosine, double sine, double* scales) noexcept;
    void close_wave() noexcept;
    void apply_queued(bool rescale) noexcept;
    void apply(double* strip, std::ptrdiff_t stride, bool rescale) noexcept;
    void apply_to_tail(double* tail, int rows, bool rescale) noexcept;

    Block<RotationStep> m_steps;
    Block<RotationWeights> m_weights;
    Block<double> m_scales, m_tail; // a column is its scale times what is stored
    Wave m_wave[s_waves] = {};
    Steps m_sweeps[s_wave_depth] = {}; // of the last wave
    int m_waves = 0;
    RotationStep* m_wave_steps = nullptr;
    double* m_z = nullptr; // the column that sweeps reach last
    std::ptrdiff_t m_stride = 0;
    int m_rows = 0, m_columns = 0, m_last_pair = 0, m_sweep = 0;
    bool m_up = false;
};

// With the cosine in the scales of the columns, two of the four products are by 1: half the work is saved.
inline void RotationQueue::set(int i, double cosine, double sine) noexcept
{
    constexpr double least_cosine = 0x1p-30, least_scale = 0x1p-200;
    const int pair = m_up ? m_last_pair - i : i;
    const double s = m_up ? -sine : sine;
    const std::ptrdiff_t step = m_last_pair - pair + 2 * m_sweep;
    double* const scales = m_scales.data() + pair;
    const double x = scales[0] * cosine, y = scales[1] * cosine;
    if (std::abs(cosine) < least_cosine || std::abs(x) < least_scale || std::abs(y) < least_scale) {
        set_general(step, cosine, s, scales);
        return;
    }
    double* const coupling = m_wave_steps[step].coupling[m_sweep];
    coupling[0] = s * scales[1] / x;
    coupling[1] = s * scales[0] / y;
    scales[0] = x;
    scales[1] = y;
}

} // namespace qmml::matrix
