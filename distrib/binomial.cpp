#include <qmml/distrib.h>

#include "core/elementary.h"
#include "distrib/binomial_coefficient.h"
#include "distrib/guard.h"
#include "distrib/incomplete_beta.h"
#include "distrib/log_gamma.h"
#include "distrib/rounding.h"
#include "distrib/thread_cache.h"

namespace qmml {

// Above this many trials the incomplete beta takes over.
static constexpr int s_products = 500;

namespace {

// What was computed for the last n and the last p, as it would be computed anew.
struct BinomialCache {
    LazyTable<s_products + 1> coefficients, failures, successes;
    RunningSums<s_products + 1> sums;
    double sums_p = -1, sums_n = -1;
};

} // namespace

// C(n, k) (1 - p)^(n - k) p^k
static double product(int k, double p, int n, BinomialCache* cache) noexcept
{
    const auto coefficient = [=] { return binomial_coefficient(n, k); };
    const auto failures = [=] { return elementary::pow(1 - p, n - k); };
    const auto successes = [=] { return elementary::pow(p, k); };
    if (!cache)
        return coefficient() * failures() * successes();
    cache->coefficients.bind(n);
    cache->failures.bind(p);
    cache->successes.bind(p);
    return cache->coefficients.get(k, coefficient) * cache->failures.get(n - k, failures) *
           cache->successes.get(k, successes);
}

// P(X = k) for 0 <= k <= n: the difference of the two neighbouring incomplete betas in closed form.
static double beta_difference(double k, double p, double n) noexcept
{
    if (p == 0 || p == 1)
        return k == (p == 0 ? 0 : n) ? 1 : 0;
    static constinit QMML_THREAD_LOCAL double s_p = 0, s_ln_success = 0, s_ln_failure = 0;
    if (!same_bits(p, s_p)) {
        s_ln_success = elementary::log(p);
        s_ln_failure = elementary::log(1 - p);
        s_p = p;
    }
    const double ln_coefficient = ln_gamma_tabulated(n + 1) - ln_gamma_tabulated(k + 1) - ln_gamma_tabulated(n - k + 1);
    return elementary::exp(ln_coefficient + k * s_ln_success + (n - k) * s_ln_failure);
}

static double binomial_mass(double x, double p, double trials) noexcept
{
    const double n = round_half_away(trials);
    if (p < 0 || p > 1 || trials < 1 || n < 1)
        return distr_fail();
    const double k = round_half_away(x);
    if (k < 0 || k > n)
        return distr_ok(0);
    if (p == p && k <= s_products && n <= s_products)
        return distr_ok(product(static_cast<int>(k), p, static_cast<int>(n), ThreadCache<BinomialCache>::get()));
    if (k != k || n != n || p != p) // where the incomplete betas fail
        return distr_fail();
    return distr_ok(beta_difference(k, p, n));
}

static double sum_of_products(int k, double p, int n) noexcept
{
    BinomialCache* const cache = ThreadCache<BinomialCache>::get();
    const auto term = [=](int j) { return product(j, p, n, cache); };
    double sum;
    if (cache) {
        if (!same_bits(cache->sums_p, p) || cache->sums_n != n) {
            cache->sums.forget();
            cache->sums_p = p;
            cache->sums_n = n;
        }
        sum = cache->sums.get(k, term);
    } else {
        sum = term(0);
        for (int j = 1; j <= k; ++j)
            sum += term(j);
    }
    return sum > 1 ? 1 : sum;
}

static double binomial_lower(double x, double p, double trials) noexcept
{
    const double n = round_half_away(trials);
    if (p < 0 || p > 1 || trials < 1 || n < 1)
        return distr_fail();
    const double k = round_half_away(x);
    if (k >= n)
        return distr_ok(1);
    if (k < 0)
        return distr_ok(0);
    if (p == p && k <= s_products && n <= s_products)
        return distr_ok(sum_of_products(static_cast<int>(k), p, static_cast<int>(n)));
    const double upper = guarded_incomplete_beta(k + 1, n - k, p);
    return upper == distr_error_value ? distr_fail() : distr_ok(1 - upper);
}

} // namespace qmml

double d_binom(double x, double p, double n)
{
    // Calm as far as the exact products go.
    const bool calm = qmml::moderate(x) && qmml::between(p, 0x1p-900, 1.0) && qmml::between(n, 1.0, 0x1p30);
    return qmml::shielded<qmml::binomial_mass>(calm, x, p, n);
}

double i_binom(double x, double p, double n)
{
    const bool calm = qmml::moderate(x) && qmml::between(p, 0x1p-900, 1.0) && qmml::between(n, 1.0, 500.25);
    return qmml::shielded<qmml::binomial_lower>(calm, x, p, n);
}
