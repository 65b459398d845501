#include "matrix/rotations.h"

#include <algorithm>

namespace qmml::matrix {

bool RotationQueue::attach(double* z, int rows, std::ptrdiff_t ld, int columns, Direction direction) noexcept
{
    m_up = direction == Direction::up;
    m_rows = rows;
    m_columns = columns;
    m_last_pair = columns - 2;
    m_stride = m_up ? -ld : ld;
    m_z = m_up && columns > 0 ? z + (columns - 1) * ld : z;
    m_waves = 0;
    if (rows % s_strip_rows != 0 && !m_tail.allocate(static_cast<std::ptrdiff_t>(columns) * s_strip_rows))
        return false;
    if (!m_steps.allocate(s_waves * steps_in_wave()) || !m_weights.allocate(s_waves * steps_in_wave()) ||
        !m_scales.allocate(columns))
        return false;
    std::fill(m_scales.begin(), m_scales.end(), 1.0);
    return true;
}

void RotationQueue::begin(int first, int last) noexcept
{
    if (m_waves > 0 && m_wave[m_waves - 1].sweeps == s_wave_depth) {
        close_wave();
        if (m_waves == s_waves)
            apply_queued(false);
    }
    if (m_waves == 0 || m_wave[m_waves - 1].sweeps == s_wave_depth) {
        m_wave_steps = m_steps.data() + m_waves * steps_in_wave();
        m_wave[m_waves++] = {.sweeps = 0, .all = {m_columns + 2 * s_wave_depth, 0}, .general = false};
    }
    Wave& wave = m_wave[m_waves - 1];
    m_sweep = wave.sweeps++;
    const int lag = 2 * m_sweep;
    Steps& steps = m_sweeps[m_sweep];
    steps = m_up ? Steps{first + lag, last + lag} : Steps{m_last_pair - last + lag, m_last_pair - first + lag};
    wave.all = {std::min(wave.all.first, steps.first), std::max(wave.all.last, steps.last)};
}

// A cosine next to nothing cannot become a scale, and a scale must not become too small: all four products, which take
// the scales into the columns.
void RotationQueue::set_general(std::ptrdiff_t step, double cosine, double sine, double* scales) noexcept
{
    Wave& wave = m_wave[m_waves - 1];
    RotationWeights* const weights = m_weights.data() + (m_waves - 1) * steps_in_wave();
    if (!wave.general) {
        wave.general = true;
        double* const first = &weights->weight[0][0];
        std::fill_n(first, steps_in_wave() * 2 * s_wave_depth, 1.0);
    }
    double* const coupling = m_wave_steps[step].coupling[m_sweep];
    double* const weight = weights[step].weight[m_sweep];
    coupling[0] = sine * scales[1];
    coupling[1] = sine * scales[0];
    weight[0] = cosine * scales[0];
    weight[1] = cosine * scales[1];
    scales[0] = scales[1] = 1;
}

// Where a sweep does not go, it does not rotate.
void RotationQueue::close_wave() noexcept
{
    const Wave& wave = m_wave[m_waves - 1];
    const auto rest = [&](int p, int from, int end) {
        for (int t = from; t < end; ++t)
            std::fill_n(m_wave_steps[t].coupling[p], 2, 0.0);
    };
    for (int p = 0; p < s_wave_depth; ++p) {
        const bool used = p < wave.sweeps;
        rest(p, wave.all.first, used ? m_sweeps[p].first : wave.all.last + 1);
        if (used)
            rest(p, m_sweeps[p].last + 1, wave.all.last + 1);
    }
}

void RotationQueue::apply(double* strip, std::ptrdiff_t stride, bool rescale) noexcept
{
    const RotationKernels& kernels = *s_rotation_kernels;
    for (int w = 0; w < m_waves; ++w)
        kernels.apply_wave(strip, stride, m_columns, m_steps.data() + w * steps_in_wave(),
                           m_wave[w].general ? m_weights.data() + w * steps_in_wave() : nullptr, m_wave[w].all.first,
                           m_wave[w].all.last);
    if (rescale)
        kernels.scale(strip, stride, m_columns, m_scales.data());
}

// The kernels work on whole strips: the last rows are moved to where there is room behind them.
void RotationQueue::apply_to_tail(double* tail, int rows, bool rescale) noexcept
{
    for (std::ptrdiff_t k = 0; k < m_columns; ++k)
        std::copy_n(tail + k * m_stride, rows, m_tail.data() + k * s_strip_rows);
    apply(m_tail.data(), s_strip_rows, rescale);
    for (std::ptrdiff_t k = 0; k < m_columns; ++k)
        std::copy_n(m_tail.data() + k * s_strip_rows, rows, tail + k * m_stride);
}

void RotationQueue::apply_queued(bool rescale) noexcept
{
    constexpr double small_scale = 0x1p-100;
    rescale =
        rescale || std::any_of(m_scales.begin(), m_scales.end(), [](double s) { return std::abs(s) < small_scale; });
    int row = 0;
    for (; m_rows - row >= s_strip_rows; row += s_strip_rows)
        apply(m_z + row, m_stride, rescale);
    if (row < m_rows)
        apply_to_tail(m_z + row, m_rows - row, rescale);
    if (rescale)
        std::fill(m_scales.begin(), m_scales.end(), 1.0);
    m_waves = 0;
}

void RotationQueue::flush() noexcept
{
    if (m_waves > 0)
        close_wave();
    apply_queued(true);
}

} // namespace qmml::matrix
