// One-dimensional minimisation without derivatives.
#pragma once

#include <cmath>

namespace qmml {

struct Minimum {
    double x, value;
};

// R. P. Brent, Algorithms for Minimization without Derivatives, 1973, chapter 5, with the golden section rounded to six
// digits, at most 100 steps. The tolerance is relative, with 1e-10 added. Starts from `x` inside [a, b].
template <class Function>
Minimum minimise(Function f, double a, double b, double x, double tolerance) noexcept
{
    constexpr double golden = 0.381966;
    double fx = f(x), w = x, v = x, fw = fx, fv = fx;
    double before_last = 0, last = 0;
    for (int step = 0; step < 100; ++step) {
        const double middle = 0.5 * (a + b), tol1 = tolerance * std::fabs(x) + 1e-10, tol2 = 2 * tol1;
        if (std::fabs(x - middle) <= tol2 - 0.5 * (b - a))
            break;
        bool parabola = false;
        if (std::fabs(before_last) > tol1) {
            const double r = (x - w) * (fx - fv);
            double q = (x - v) * (fx - fw), p = (x - v) * q - (x - w) * r;
            q = 2 * (q - r);
            if (q > 0)
                p = -p;
            q = std::fabs(q);
            const double earlier = before_last;
            before_last = last;
            if (std::fabs(p) < std::fabs(0.5 * q * earlier) && p > q * (a - x) && p < q * (b - x)) {
                parabola = true;
                last = p / q;
                const double u = x + last;
                if (u - a < tol2 || b - u < tol2)
                    last = std::copysign(tol1, middle - x);
            }
        }
        if (!parabola) {
            before_last = x >= middle ? a - x : b - x;
            last = golden * before_last;
        }
        const double u = x + (std::fabs(last) >= tol1 ? last : std::copysign(tol1, last));
        const double fu = f(u);
        if (fu <= fx) {
            (u >= x ? a : b) = x;
            v = w, fv = fw;
            w = x, fw = fx;
            x = u, fx = fu;
        } else {
            (u < x ? a : b) = u;
            if (fu <= fw || w == x) {
                v = w, fv = fw;
                w = u, fw = fu;
            } else if (fu <= fv || v == x || v == w) {
                v = u, fv = fu;
            }
        }
    }
    return {x, fx};
}

} // namespace qmml
