// The GNU Scientific Library: ran2, which is the same two generators and the same shuffle, and its quickest normal
// deviate on its default generator.
#include "random_bench.h"

#include <gsl/gsl_randist.h>
#include <gsl/gsl_rng.h>
#include <numeric>

namespace qmml::bench {
namespace {

// Lives as long as the benchmarks that are registered with it.
gsl_rng* make_generator(const gsl_rng_type* type)
{
    static std::vector<std::unique_ptr<gsl_rng, void (*)(gsl_rng*)>> s_generators;
    return s_generators.emplace_back(gsl_rng_alloc(type), gsl_rng_free).get();
}

void add_gsl()
{
    gsl_rng* const ran2 = make_generator(gsl_rng_ran2);
    gsl_rng* const standard = make_generator(gsl_rng_default);
    add_deviate("uniform/gsl_ran2", s_uniform, [ran2] { return gsl_rng_uniform(ran2); });
    add_deviate("normal_deviate/gsl_polar_ran2", s_normal, [ran2] { return gsl_ran_gaussian(ran2, 1); });
    add_deviate("normal_deviate/gsl_ziggurat", s_normal, [standard] { return gsl_ran_gaussian_ziggurat(standard, 1); });
    for (const int mean : {3, 100})
        add_deviate("poisson_deviate_" + std::to_string(mean) + "/gsl_ran2", poisson(mean),
                    [=] { return static_cast<double>(gsl_ran_poisson(ran2, mean)); });
    for (const Selection& selection : s_selections) {
        std::vector<int> all(static_cast<std::size_t>(selection.range));
        std::iota(all.begin(), all.end(), 1);
        add_selection(selection, "gsl_choose", [standard, all](std::vector<int>& out) mutable {
            gsl_ran_choose(standard, out.data(), out.size(), all.data(), all.size(), sizeof(int));
        });
    }
}

const Peer<> s_gsl(add_gsl);

} // namespace
} // namespace qmml::bench
