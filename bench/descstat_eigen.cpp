// Eigen: array expressions, in which what is missing counts as 0.
#include "descstat_bench.h"

#include <Eigen/Core>

namespace qmml::bench {
namespace {

using Array = Eigen::Map<const Eigen::ArrayXd>;

Array view(const std::vector<double>& v)
{
    return {v.data(), static_cast<Eigen::Index>(v.size())};
}

double mean(const Array& x)
{
    return (x == x).select(x, 0.0).sum() / static_cast<double>((x == x).count());
}

void add_eigen()
{
    add_statistic("mean", "eigen", [](const std::vector<double>& v) { return mean(view(v)); });
    add_statistic("variance", "eigen", [](const std::vector<double>& v) {
        const Array x = view(v);
        const auto count = static_cast<double>((x == x).count());
        return (x == x).select(x - mean(x), 0.0).square().sum() / (count - 1);
    });
    add_statistic("min", "eigen",
                  [](const std::vector<double>& v) { return view(v).minCoeff<Eigen::PropagateNumbers>(); });
    add_statistic("max", "eigen",
                  [](const std::vector<double>& v) { return view(v).maxCoeff<Eigen::PropagateNumbers>(); });
}

const Peer<> s_eigen(add_eigen);

} // namespace
} // namespace qmml::bench
