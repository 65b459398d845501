#include "random_bench.h"

#include <qmml/random.h>

#include <algorithm>
#include <numeric>
#include <random>
#include <unordered_set>

namespace qmml::bench {

// Six standard errors: a right generator with a fixed seed stays inside, a wrong scale or variance does not.
bool moments_are_right(const Deviate& deviate, const std::function<double()>& draw)
{
    constexpr int count = 100'000;
    double sum = 0, squares = 0;
    for (int i = 0; i < count; ++i) {
        const double difference = draw() - deviate.mean;
        sum += difference;
        squares += difference * difference;
    }
    const double spread = deviate.fourth_moment - deviate.variance * deviate.variance;
    return std::abs(sum / count) <= 6 * std::sqrt(deviate.variance / count) &&
           std::abs(squares / count - deviate.variance) <= 6 * std::sqrt(spread / count);
}

bool are_distinct(std::vector<int> integers, int range)
{
    std::sort(integers.begin(), integers.end());
    return std::adjacent_find(integers.begin(), integers.end()) == integers.end() && integers.front() >= 1 &&
           integers.back() <= range;
}

namespace {

void add_qmml()
{
    inirnd_(1);
    add_deviate("uniform/qmml", s_uniform, [] { return uniform_(1); });
    add_deviate("normal_deviate/qmml", s_normal, [] { return znormal_(1); });
    add_deviate("poisson_deviate_3/qmml", poisson(3), [] { return poisson_(3); });
    add_deviate("poisson_deviate_100/qmml", poisson(100), [] { return poisson_(100); });
    for (const Selection& selection : s_selections)
        add_selection(selection, "qmml", [range = selection.range](std::vector<int>& out) {
            PyloSelectUniqueRandomIntegersInRange(static_cast<int>(out.size()), 1, range, out.data());
        });
}

void add_standard_library()
{
    const auto add = [](const std::string& workload, const Deviate& deviate, auto distribution) {
        add_deviate(workload + "/std_mt19937_64", deviate,
                    [engine = std::mt19937_64(1), distribution]() mutable -> double {
                        return static_cast<double>(distribution(engine));
                    });
    };
    // The engine's top bits scaled by hand, as anyone would who minds the library's detour through long double.
    add("uniform", s_uniform, [](std::mt19937_64& engine) { return static_cast<double>(engine() >> 11) * 0x1p-53; });
    add_deviate("uniform/std_uniform_real", s_uniform,
                [engine = std::mt19937_64(1)]() mutable { return std::uniform_real_distribution<double>()(engine); });
    add("normal_deviate", s_normal, std::normal_distribution<double>());
    add("poisson_deviate_3", poisson(3), std::poisson_distribution<int>(3));
    add("poisson_deviate_100", poisson(100), std::poisson_distribution<int>(100));
}

// From a list of all integers, and by rejection of what is there already.
void add_standard_selections()
{
    for (const Selection& selection : s_selections) {
        std::vector<int> all(static_cast<std::size_t>(selection.range));
        std::iota(all.begin(), all.end(), 1);
        add_selection(selection, "std_sample", [all, engine = std::mt19937_64(1)](std::vector<int>& out) mutable {
            std::sample(all.begin(), all.end(), out.begin(), out.size(), engine);
        });
        add_selection(selection, "std_unordered_set",
                      [range = selection.range, engine = std::mt19937_64(1)](std::vector<int>& out) mutable {
                          std::unordered_set<int> seen;
                          std::uniform_int_distribution<int> uniform(1, range);
                          while (seen.size() < out.size())
                              seen.insert(uniform(engine));
                          std::copy(seen.begin(), seen.end(), out.begin());
                          std::sort(out.begin(), out.end());
                      });
    }
}

} // namespace
} // namespace qmml::bench

int main(int argc, char** argv)
{
    using namespace qmml::bench;
    add_standard_library();
    add_standard_selections();
    Peer<>::add_all();
    add_qmml();
    return run_benchmarks(argc, argv);
}
