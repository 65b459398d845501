#include "distrib/incomplete_beta.h"
#include "distrib/log_pair.h"

#include <algorithm>
#include <cmath>

// K. L. Majumder and G. P. Bhattacharjee, Algorithm AS 63, The incomplete beta integral, Applied Statistics 22 (1973),
// 409-411.
namespace qmml {

namespace {

// The sum of Soper's reduction. Terms come in blocks: their quotients stand side by side, ahead of the chain of
// products.
struct Sum {
    const double p, accuracy;
    double term = 1, value = 1;
    double n = 0; // terms so far

    bool small() const noexcept
    {
        const double size = std::fabs(term);
        return size <= accuracy && size <= accuracy * value;
    }

    // Adds up to `count` terms, each numerator(i) * ratio / (p + i) times the one before it, i counting all terms from
    // 1; true once they are small enough.
    template <class Numerator>
    bool add(double count, double ratio, int* budget, Numerator numerator) noexcept
    {
        constexpr int block = 8;
        while (count > 0 && *budget > 0 && std::isfinite(value)) {
            const int many = static_cast<int>(std::min<double>(count, block));
            double factor[block];
            for (int i = 0; i < block; ++i)
                factor[i] = numerator(n + 1 + i) * ratio / (p + (n + 1 + i));
            for (int i = 0; i < many; ++i) {
                term *= factor[i];
                value += term;
                if (small())
                    return true;
            }
            n += many;
            count -= many;
            *budget -= many;
        }
        return false;
    }
};

} // namespace

BetaRatio beta_ratio(double x, double p, double q, double ln_beta, double accuracy, int* budget) noexcept
{
    if (!(p > 0 && q > 0 && x >= 0 && x <= 1))
        return {x, 0, true};
    if (x == 0 || x == 1)
        return {x, 0, false};
    const double s = p + q;
    const bool swapped = p < s * x;
    const double near = swapped ? 1 - x : x, far = swapped ? x : 1 - x;
    const double pp = swapped ? q : p, qq = swapped ? p : q;

    const LogPair ln = log_pair(near, far);
    const double weight = elementary::exp(pp * ln.first + (qq - 1) * ln.second - ln_beta);

    // The reductions raise p and lower q as long as q lasts, then raise p alone.
    const double reductions = std::trunc(std::min(qq + far * s, 1e15));
    Sum sum{pp, accuracy};
    bool done = sum.add(reductions, near / far, budget, [qq](double i) { return qq - i; });
    done = done || sum.add(1, near, budget, [qq](double i) { return qq - i; });
    done = done || sum.add(1e15, near, budget, [s, reductions](double i) { return s + (i - reductions - 2); });
    if (!done)
        return {x, 0, true};
    const double value = sum.value * weight / pp;
    return {swapped ? 1 - value : value, weight / near, false};
}

} // namespace qmml
