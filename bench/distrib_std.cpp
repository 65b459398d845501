// The standard library, where it has the function.
#include "distrib_bench.h"

#include <numbers>

namespace qmml::bench {
namespace {

void add_std(Suite& suite)
{
    const DistributionParameters p = distribution_parameters;
    suite.add("gammln", "std", [](double x) { return std::lgamma(x); });
    suite.add("i_normal", "std",
              [p](double x) { return 0.5 * std::erfc((p.location - x) / p.scale * (1 / std::numbers::sqrt2)); });
}

const Peer<Suite&> s_std(add_std);

} // namespace
} // namespace qmml::bench
