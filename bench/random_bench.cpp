#include "random_bench.h"

#include <qmml/random.h>

#include <random>

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

namespace {

void add_qmml()
{
    inirnd_(1);
    add_deviate("uniform/qmml", s_uniform, [] { return uniform_(1); });
    add_deviate("normal_deviate/qmml", s_normal, [] { return znormal_(1); });
    add_deviate("poisson_deviate_3/qmml", poisson(3), [] { return poisson_(3); });
    add_deviate("poisson_deviate_100/qmml", poisson(100), [] { return poisson_(100); });
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

} // namespace
} // namespace qmml::bench

int main(int argc, char** argv)
{
    using namespace qmml::bench;
    add_standard_library();
    Peer<>::add_all();
    add_qmml();
    return run_benchmarks(argc, argv);
}
