// R's standalone nmath, on its own uniform generator (Marsaglia's multiply with carry).
#include "random_bench.h"

#define MATHLIB_STANDALONE 1
#include <Rmath.h> // last: it defines short names as macros

namespace qmml::bench {
namespace {

void add_nmath()
{
    add_deviate("uniform/nmath", s_uniform, [] { return unif_rand(); });
    add_deviate("normal_deviate/nmath", s_normal, [] { return norm_rand(); });
    for (const double mean : {3.0, 100.0})
        add_deviate("poisson_deviate_" + std::to_string(static_cast<int>(mean)) + "/nmath", poisson(mean),
                    [mean] { return rpois(mean); });
}

const Peer<> s_nmath(add_nmath);

} // namespace
} // namespace qmml::bench
