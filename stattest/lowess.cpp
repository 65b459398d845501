// W. S. Cleveland, Robust locally weighted regression and smoothing scatterplots, Journal of the American Statistical
// Association 74 (1979), 829-836; LOWESS: A program for smoothing scatterplots by robust locally weighted regression,
// The American Statistician 35 (1981), 54.
#include "stattest/lowess.h"

#include "core/block.h"
#include "core/sort.h"
#include "stattest/kernels.h"

#include <algorithm>
#include <cmath>
#include <cstdint>

namespace qmml::stattest {
namespace {

struct Span {
    int neighbours;
    double delta;
};

// A part that is no number counts as the least.
Span span_of(int n, double part, double delta) noexcept
{
    part = part > 0.99999 ? 0.99999 : part >= 1e-5 ? part : 1e-5;
    return {std::clamp(static_cast<int>(n * part), 2, n), delta < 0 ? 0 : delta};
}

double cube(double v) noexcept
{
    return v * v * v;
}

// One fit; false where the weights vanish. The weights reach as far to the right as there are ties, and w has room for
// all points.
bool fit_at(const Scatter& s, int n, Window window, double* w, double& fitted) noexcept
{
    const double xs = s.x[window.point];
    const double h = std::max(xs - s.x[window.left], s.x[window.right] - xs);
    const double h9 = 0.999 * h, h1 = 0.001 * h;
    double sum = 0;
    int end = window.left;
    for (; end < n; ++end) {
        w[end] = 0;
        const double distance = std::abs(s.x[end] - xs);
        if (distance <= h9) {
            w[end] = distance <= h1 ? 1 : cube(1 - cube(distance / h));
            if (s.robustness)
                w[end] *= s.robustness[end];
            sum += w[end];
        } else if (s.x[end] > xs) {
            break;
        }
    }
    if (sum <= 0)
        return false;
    double mean = 0;
    for (int j = window.left; j < end; ++j) {
        w[j] /= sum;
        mean += w[j] * s.x[j];
    }
    if (h > 0) {
        double square = 0;
        for (int j = window.left; j < end; ++j) {
            const double deviation = s.x[j] - mean;
            square += w[j] * (deviation * deviation);
        }
        // Points too close together in x have no slope.
        if (std::sqrt(square) > 0.001 * s.range) {
            const double slope = (xs - mean) / square;
            for (int j = window.left; j < end; ++j)
                w[j] *= slope * (s.x[j] - mean) + 1;
        }
    }
    fitted = 0;
    for (int j = window.left; j < end; ++j)
        fitted += w[j] * s.y[j];
    return true;
}

// Which points are fitted follows from x and delta alone, and each fit from its neighbourhood: the walk is made once.
class Plan {
public:
    Plan(const double* x, int n, const Span& span) noexcept
    {
        int left = 0, right = span.neighbours - 1;
        for (int last = -1, i = 0; last < n - 1; i = next(x, n, span.delta, i, last)) {
            while (right < n - 1 && x[i] - x[left] > x[right + 1] - x[i]) {
                ++left;
                ++right;
            }
            m_windows[m_count++] = {index(i), index(left), index(right), index(n)};
            last = i;
        }
    }

    // The point to be fitted after i; last becomes the last that has its value by then, being tied with i.
    static int next(const double* x, int n, double delta, int i, int& last) noexcept
    {
        last = i;
        const double cut = x[i] + delta;
        for (i = last + 1; i < n && !(x[i] > cut); ++i)
            if (x[i] == x[last])
                last = i;
        return std::max(last + 1, i - 1);
    }

    int count() const noexcept { return m_count; }
    const Window& operator[](int i) const noexcept { return m_windows[i]; }

    // Finds where the ties on the right of each neighbourhood end, for ascending x. False where a bandwidth is too
    // small to have a thousandth.
    bool find_ends(const double* x, int n) noexcept
    {
        for (int i = 0; i < m_count; ++i) {
            Window& w = m_windows[i];
            const double h = std::max(x[w.point] - x[w.left], x[w.right] - x[w.point]);
            if (h != 0 && h < 0x1p-900)
                return false;
            int end = w.right + 1;
            while (end < n && x[end] - x[w.point] <= 0.999 * h)
                ++end;
            w.end = index(end);
        }
        return true;
    }

private:
    static std::uint16_t index(int i) noexcept { return static_cast<std::uint16_t>(i); }

    int m_count = 0;
    Window m_windows[s_most_points];
};

// Side by side the fits take in points that are none of theirs, with weight 0: that is exact when nothing is infinite,
// also on the way, and when no point beyond the end of a neighbourhood could come back into it.
bool fits_side_by_side(const double* x, const double* y, int n) noexcept
{
    constexpr double s_limit = 0x1p400;
    for (int i = 0; i < n; ++i)
        if (!(std::abs(x[i]) < s_limit) || !(std::abs(y[i]) < s_limit) || (i > 0 && !(x[i - 1] <= x[i])))
            return false;
    return true;
}

class Fits {
public:
    Fits(const double* x, const double* y, int n, const Span& span) noexcept
        : m_n(n), m_plan(x, n, span), m_scatter{x, y, nullptr, x[n - 1] - x[0]}
    {
        if (m_plan.count() >= m_kernels.fits && fits_side_by_side(x, y, n) && m_plan.find_ends(x, n))
            static_cast<void>(m_weights.allocate(static_cast<std::int64_t>(n) * m_kernels.fits)); // or one by one
    }

    int count() const noexcept { return m_plan.count(); }
    int point(int i) const noexcept { return m_plan[i].point; }

    // Writes the fitted points of smoothed; work has room for n weights.
    void run(const double* robustness, double* work, double* smoothed) noexcept
    {
        m_scatter.robustness = robustness;
        const int together = m_kernels.fits;
        int i = 0;
        if (m_weights.size() != 0)
            for (; i + together <= count(); i += together) {
                if (!overlap(i, together)) {
                    run_one_by_one(i, i + together, work, smoothed);
                    continue;
                }
                double fitted[s_most_fits];
                bool succeeded[s_most_fits];
                m_kernels.local_fits(m_scatter, &m_plan[i], m_weights.data(), fitted, succeeded);
                for (int k = 0; k < together; ++k)
                    smoothed[point(i + k)] = succeeded[k] ? fitted[k] : m_scatter.y[point(i + k)];
            }
        run_one_by_one(i, count(), work, smoothed);
    }

private:
    // Whether side by side is less work: neighbourhoods far apart would mostly add zeros.
    bool overlap(int first, int together) const noexcept
    {
        int lowest = m_n, highest = 0, points = 0;
        for (int i = first; i < first + together; ++i) {
            const Window& w = m_plan[i];
            lowest = std::min<int>(lowest, w.left);
            highest = std::max<int>(highest, w.end);
            points += w.end - w.left;
        }
        return 4 * (highest - lowest) <= 3 * points;
    }

    void run_one_by_one(int first, int end, double* work, double* smoothed) noexcept
    {
        for (int i = first; i < end; ++i)
            if (!fit_at(m_scatter, m_n, m_plan[i], work, smoothed[point(i)]))
                smoothed[point(i)] = m_scatter.y[point(i)];
    }

    const TestKernels& m_kernels = *s_test_kernels;
    int m_n;
    Plan m_plan;
    Scatter m_scatter;
    Block<double> m_weights;
};

// The points between the fitted ones.
void interpolate(const double* x, int n, double delta, const Fits& fits, double* smoothed) noexcept
{
    int last = -1;
    for (int k = 0; k < fits.count(); ++k) {
        const int i = fits.point(k);
        if (last < i - 1) {
            const double distance = x[i] - x[last];
            for (int j = last + 1; j < i; ++j) {
                const double part = (x[j] - x[last]) / distance;
                smoothed[j] = part * smoothed[i] + (1 - part) * smoothed[last];
            }
        }
        static_cast<void>(Plan::next(x, n, delta, i, last));
        for (int j = i + 1; j <= last; ++j)
            if (x[j] == x[i])
                smoothed[j] = smoothed[i];
    }
}

// Bisquare weights of the residuals in units of six medians.
void weigh_residuals(const double* residuals, int n, double* robustness) noexcept
{
    for (int i = 0; i < n; ++i)
        robustness[i] = std::abs(residuals[i]);
    const std::int64_t middle[2] = {(n - 1) / 2, n / 2};
    select_ranks(robustness, n, middle, 2);
    const double scale = 3 * (robustness[middle[0]] + robustness[middle[1]]);
    const double near = 0.001 * scale, far = 0.999 * scale;
    for (int i = 0; i < n; ++i) {
        const double r = std::abs(residuals[i]);
        const double ratio = r / scale, rest = 1 - ratio * ratio;
        robustness[i] = r <= near ? 1 : r <= far ? rest * rest : 0;
    }
}

} // namespace

void lowess(const double* x, const double* y, int n, double part, int steps, double delta, double* smoothed,
            double* robustness, double* residuals) noexcept
{
    const Span span = span_of(n, part, delta);
    Fits fits(x, y, n, span);
    for (int step = 0;; ++step) {
        // The residuals are not needed yet: their place serves for the weights.
        fits.run(step == 0 ? nullptr : robustness, residuals, smoothed);
        interpolate(x, n, span.delta, fits, smoothed);
        for (int i = 0; i < n; ++i)
            residuals[i] = y[i] - smoothed[i];
        if (step == steps)
            return;
        weigh_residuals(residuals, n, robustness);
    }
}

} // namespace qmml::stattest
