// The tests and the smoother. Their peers are R and SciPy: peers_stattest.py times them on the same data and holds
// their statistics against those that are recorded here.
#include <qmml/stattest.h>

#include "harness.h"

#include <algorithm>
#include <limits>

namespace qmml::bench {
namespace {

using Doubles = std::vector<double>;

constexpr double s_missing = std::numeric_limits<double>::quiet_NaN();

// A generator that R and Python repeat in double precision: Lehmer's with the multiplier 16807.
class Stream {
public:
    explicit Stream(int seed) : m_state(seed) {}
    double uniform()
    {
        m_state = std::fmod(16807 * m_state, 2147483647);
        return m_state / 2147483647;
    }
    double bell() { return uniform() + uniform() + uniform() + uniform() - 2; }

private:
    double m_state;
};

Doubles bells(std::size_t n, int seed)
{
    Stream stream(seed);
    Doubles sample(n);
    for (double& v : sample)
        v = stream.bell();
    return sample;
}

// Times a call that returns its statistic.
template <class Call>
void add(const std::string& name, Call call)
{
    benchmark::RegisterBenchmark((name + "/qmml").c_str(), [call](benchmark::State& state) mutable {
        volatile double statistic = 0;
        for (auto _ : state)
            statistic = call();
        state.counters["statistic"] = statistic;
    });
}

void add_samples()
{
    for (const int n : {50, 500, 5000}) {
        const Doubles x = bells(static_cast<std::size_t>(n), n);
        add("ks_normal_n" + std::to_string(n), [=] {
            double d = 0, p = 0, lilliefors = 0;
            int code = 0;
            ComputeKolmogorovSmirnovTest__(0, 1, 0, 0.6, 0, n, x.data(), s_missing, &d, &p, &lilliefors, &code);
            return d;
        });
        add("shapiro_wilk_n" + std::to_string(n), [=] {
            double w = 0, p = 0;
            int code = 0;
            WilksWTest__(0, 0, x.data(), n, n, &w, &p, &code);
            return w;
        });
    }
}

void add_large()
{
    constexpr int s_count = 1000000, s_groups = 4;
    auto x = std::make_shared<const Doubles>(bells(s_count, 7));
    auto y = std::make_shared<Doubles>(bells(s_count, 8));
    for (std::size_t i = 0; i < s_count; ++i)
        (*y)[i] += 0.5 * (*x)[i];
    const std::vector<int> sizes(s_groups, s_count / s_groups);
    for (const int flags : {0, 1})
        add(flags ? "anova_levene_1e6" : "anova_1e6", [=] {
            double r[8] = {};
            int code = 0;
            OneWayAnova__(flags, 0, x->data(), s_groups, sizes.data(), r, r + 1, r + 2, r + 3, r + 4, r + 5, r + 6,
                          r + 7, &code);
            return flags ? r[4] : r[0];
        });
    add("simple_correlation_1e6", [=] {
        double r[13] = {};
        int code = 0;
        ComputeSimpleCorrelation__(0, s_count, x->data(), y->data(), s_missing, r, r + 1, r + 2, r + 3, r + 4, r + 5,
                                   r + 6, r + 7, r + 8, r + 9, r + 10, r + 11, r + 12, &code);
        return r[4];
    });
    std::vector<int> group(s_count);
    for (int i = 0; i < s_count; ++i)
        group[static_cast<std::size_t>(i)] = i / (s_count / s_groups);
    // The arrays are sorted by the call: copying them is part of it.
    add("kruskal_wallis_1e6", [=, values = Doubles(), index = std::vector<int>()]() mutable {
        values = *x;
        index = group;
        double counts[s_groups], sums[s_groups], h = 0, df = 0, p = 0;
        int code = 0;
        KruskalAnovaTest__(0, s_count, s_groups, index.data(), values.data(), counts, sums, &h, &df, &code, &p);
        return h;
    });
}

void add_lowess()
{
    for (const std::size_t n : {200u, 4000u}) {
        Doubles x = bells(n, 11), y = bells(n, 12);
        std::sort(x.begin(), x.end());
        for (std::size_t i = 0; i < n; ++i)
            y[i] += std::sin(2 * x[i]);
        for (const int percent : {0, 1}) { // of the range of x
            const double delta = 0.01 * percent * (x.back() - x.front());
            add("lowess_n" + std::to_string(n) + "_delta" + std::to_string(percent),
                [=, ys = Doubles(n), rw = Doubles(n), res = Doubles(n)]() mutable {
                    int code = 0;
                    clowess(x.data(), y.data(), static_cast<int>(n), 2.0 / 3, 3, delta, ys.data(), rw.data(),
                            res.data(), &code);
                    return ys[n / 2];
                });
        }
    }
}

} // namespace
} // namespace qmml::bench

int main(int argc, char** argv)
{
    qmml::bench::add_samples();
    qmml::bench::add_large();
    qmml::bench::add_lowess();
    return qmml::bench::run_benchmarks(argc, argv);
}
