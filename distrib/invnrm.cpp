#include <qmml/distrib.h>

#include "distrib/guard.h"
#include "distrib/incomplete_beta.h"
#include "distrib/minimise.h"

#include <cmath>

namespace qmml {

// Student's t quantile as the minimum of the distance between the tail and the wanted one. The answer is good to the
// tolerance of the search only, and callers know its values.
static double student_quantile_by_search(double p, double df) noexcept
{
    if (p == 0)
        return 0;
    if (p == 1)
        return 100000;
    if (std::fabs(p - 0.5) < 0.01)
        return 0;
    const double q = p >= 0.5 ? p : 1 - p;
    const auto distance = [=](double t) {
        return std::fabs((q - 1) + 0.5 * guarded_incomplete_beta(df / 2, 0.5, df / (t * t + df)));
    };
    double half_width = q <= 0.54 ? 0.125 : q <= 0.59 ? 0.25 : q < 0.8 ? 1 : 5;
    constexpr double tolerance = 0.005;
    Minimum best = minimise(distance, -half_width, half_width, 0, tolerance);
    while (best.value > 0.001) {
        half_width /= 2;
        if (half_width <= 0.01) {
            best.x = 0;
            break;
        }
        best = minimise(distance, -half_width, half_width, 0, tolerance);
    }
    return p < 0.5 ? best.x : -best.x;
}

} // namespace qmml

double invnrm(double p, int df)
{
    return qmml::shielded([=] { return qmml::student_quantile_by_search(p, df); });
}
