#include "distrib/studentized_range.h"

#include "core/elementary.h"
#include "distrib/guard.h"
#include "distrib/inverse_normal.h"

#include <qmml/distrib.h>

#include <algorithm>
#include <cmath>

namespace qmml {
namespace {

enum Fault : short { s_none = 0, s_invalid_parameters = 1, s_outside_or_no_convergence = 2, s_inside = 9 };

struct RangeResult {
    double value;
    short fault;
};

constexpr double s_most_degrees = 120; // beyond, they count as infinite

bool valid(double v, double r) noexcept
{
    return !(v < 1) && !(r < 2);
}

// Density of the standard deviation estimate at 1, up to what the spacing of the grid brings in.
double deviation_factor(double v) noexcept
{
    constexpr double one_degree = 0.193064705, two_degrees = 0.293525326;
    constexpr double c1 = 0.318309886, c2 = -0.00268132716, c3 = 0.00347222222, c4 = 0.0833333333;
    if (v == 1)
        return one_degree;
    if (v == 2)
        return two_degrees;
    const double half = v / 2;
    return std::sqrt(half) * c1 / (1 + ((c2 / half + c3) / half + c4) / half);
}

RangeResult range_probability(double q, double v, double r) noexcept
{
    constexpr double step = 0.45, large_factor = 0.39894228;
    if (!valid(v, r))
        return {0, s_invalid_parameters};
    if (q <= 0)
        return {0, s_none};

    StudentizedRangeGrid grid = {};
    grid.step = step * elementary::pow(r, -0.2);
    grid.start = 0.5 * elementary::log(r);
    grid.power = r - 1;
    grid.q = q;
    if (v > s_most_degrees) {
        grid.log_scale = elementary::log(r * grid.step * large_factor);
        return {s_studentized_range_kernels->probability(grid), s_none};
    }
    const double spacing = step / std::sqrt(v);
    grid.log_scale = elementary::log(deviation_factor(v) * r * grid.step * spacing);
    grid.wings = 2;
    for (int wing = 0; wing < 2; ++wing)
        for (int j = 0; j < StudentizedRangeGrid::wing_size; ++j) {
            const double h = (wing == 0 ? j + 1 : -(j + 1)) * spacing;
            const double deviation = elementary::exp(h);
            grid.scaled_q[wing][j] = q * deviation;
            grid.log_weight[wing][j] = v * (h + 0.5 - 0.5 * deviation * deviation);
        }
    return {s_studentized_range_kernels->probability(grid), s_none};
}

// AS 190.2.
RangeResult starting_quantile(double p, double v, double r) noexcept
{
    bool fault = false;
    double t = inverse_normal(0.5 + 0.5 * p, &fault);
    if (fault)
        return {0, s_invalid_parameters};
    double q = 0.8843 - 0.2368 * t;
    if (v < s_most_degrees) {
        t += (t * t * t + t) / (4 * v);
        q = 0.8843 - 0.2368 * t - 1.214 / v + 1.208 * t / v;
    }
    return {t * (q * elementary::log(r - 1) + 1.4142), s_none};
}

// By steps, which shrink only where one has gone too far and the next has come back.
RangeResult search_quantile(double p, double v, double r) noexcept
{
    constexpr double tolerance = 1e-5;
    constexpr int most_steps = 500;
    double x = 1, step = 0.5;
    bool overshot = false;
    for (int i = 0; i < most_steps; ++i) {
        if (step < tolerance)
            return {x, s_none};
        if (x <= 0)
            x = 0;
        const RangeResult at = range_probability(x, v, r);
        if (at.fault != s_none)
            return {x, at.fault};
        if (at.value >= p + tolerance) {
            x -= step;
            overshot = true;
        } else {
            if (overshot)
                step /= 2;
            x += step;
            overshot = false;
        }
    }
    return {x < 0 ? 0 : x, s_outside_or_no_convergence};
}

// AS 190.1 with its second starting probability on the other side of the first one, and a stop that looks at the newest
// point; outside its range, the search by steps.
RangeResult range_quantile(double p, double v, double r) noexcept
{
    constexpr double near_enough = 0.001, converged = 5 * near_enough, flat = 1e-4;
    constexpr int most_points = 8;
    if (!valid(v, r))
        return {0, s_invalid_parameters};
    if (p < 0.9 || p > 0.99)
        return search_quantile(p, v, r);

    RangeResult start = starting_quantile(p, v, r), at_start = range_probability(start.value, v, r);
    if (start.fault != s_none || at_start.fault != s_none)
        return {start.value, s_inside};
    if (std::abs(at_start.value - p) < near_enough)
        return start;
    double q1 = start.value, p1 = at_start.value, second = p;
    if (p1 > p)
        second = 1.75 * p - 0.75 * p1;
    if (p1 < p)
        second = p + (p - p1) * (1 - p) / (1 - p1) * 0.75;
    start = starting_quantile(std::clamp(second, 0.8, 0.995), v, r);
    double q2 = start.value, estimate = q2;
    for (int j = 2; j <= most_points; ++j) {
        const RangeResult newest = range_probability(q2, v, r);
        if (start.fault != s_none || newest.fault != s_none)
            return {q2, s_inside};
        const double e1 = p1 - p, e2 = newest.value - p, difference = e2 - e1;
        estimate = std::abs(difference) > flat ? (e2 * q1 - e1 * q2) / difference : (q1 + q2) / 2;
        if (std::abs(e1) >= std::abs(e2)) {
            q1 = q2;
            p1 = newest.value;
        }
        if (std::abs(e2) < converged)
            break;
        q2 = estimate;
    }
    return {estimate, s_none};
}

template <RangeResult (*Function)(double, double, double) noexcept>
double range_entry(double x, double v, double r, short* fault) noexcept
{
    short code = s_none;
    const double value = shielded([&] {
        const RangeResult result = Function(x, v, r);
        code = result.fault;
        return result.value;
    });
    if (fault != nullptr)
        *fault = code;
    return value;
}

} // namespace
} // namespace qmml

double prtrng(double q, double v, double r, short* fault)
{
    return qmml::range_entry<qmml::range_probability>(q, v, r, fault);
}

double qtrngo(double p, double v, double r, short* fault)
{
    return qmml::range_entry<qmml::starting_quantile>(p, v, r, fault);
}

double qtrng(double p, double v, double r, short* fault)
{
    return qmml::range_entry<qmml::range_quantile>(p, v, r, fault);
}

double qinter(double p, double v, double r, short* fault)
{
    return qmml::range_entry<qmml::search_quantile>(p, v, r, fault);
}
