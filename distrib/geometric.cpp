#include <qmml/distrib.h>

#include "core/elementary.h"
#include "distrib/guard.h"
#include "distrib/rounding.h"
#include "distrib/thread_cache.h"

namespace qmml {

static constexpr int s_terms = 2000;

namespace {

// What was computed for the last p, as it would be computed anew.
struct GeometricCache {
    LazyTable<s_terms + 1> powers;
    RunningSums<s_terms + 1> sums;
    double sums_p = -1;
};

} // namespace

// (1 - p)^k p
static double product(int k, double p, GeometricCache* cache) noexcept
{
    const auto power = [=] { return elementary::pow(1 - p, k); };
    if (k == 0)
        return p;
    if (!cache)
        return power() * p;
    cache->powers.bind(p);
    return cache->powers.get(k, power) * p;
}

static double geometric_mass(double x, double p) noexcept
{
    if (p < 0 || p > 1)
        return distr_fail();
    const double k = round_half_away(x);
    if (k < 0)
        return distr_ok(0);
    if (p == p && k <= s_terms)
        return distr_ok(product(static_cast<int>(k), p, ThreadCache<GeometricCache>::get()));
    return distr_ok(elementary::pow(1 - p, k) * p);
}

static double geometric_lower(double x, double p) noexcept
{
    if (p < 0 || p > 1)
        return distr_fail();
    const double k = round_half_away(x);
    if (k < 0)
        return distr_ok(0);
    if (k != k || p != p)
        return distr_ok(k + p);
    const int last = k < s_terms ? static_cast<int>(k) : s_terms;
    GeometricCache* const cache = ThreadCache<GeometricCache>::get();
    const auto term = [=](int j) { return product(j, p, cache); };
    if (cache) {
        if (!same_bits(cache->sums_p, p)) {
            cache->sums.forget();
            cache->sums_p = p;
        }
        return distr_ok(cache->sums.get(last, term));
    }
    double sum = p;
    for (int j = 1; j <= last; ++j)
        sum += term(j);
    return distr_ok(sum);
}

static bool calm_geometric(double x, double p) noexcept
{
    return moderate(x) && between(p, 0x1p-900, 1.0);
}

} // namespace qmml

double d_geom(double x, double p)
{
    return qmml::shielded<qmml::geometric_mass>(qmml::calm_geometric(x, p), x, p);
}

double i_geom(double x, double p)
{
    return qmml::shielded<qmml::geometric_lower>(qmml::calm_geometric(x, p), x, p);
}
