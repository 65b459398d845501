// The GNU Scientific Library, which knows no missing values: they are left out first.
#include "descstat_bench.h"

#include <gsl/gsl_sort.h>
#include <gsl/gsl_statistics.h>

namespace qmml::bench {
namespace {

template <double (*F)(const double*, std::size_t, std::size_t)>
void add_moment(const std::string& name)
{
    add_statistic(name, "gsl", [buffer = std::vector<double>()](const std::vector<double>& v) mutable {
        present(v, buffer);
        return F(buffer.data(), 1, buffer.size());
    });
}

void add_gsl()
{
    add_moment<gsl_stats_mean>("mean");
    add_moment<gsl_stats_variance>("variance");
    add_moment<gsl_stats_min>("min");
    add_moment<gsl_stats_max>("max");
    add_statistic("median", "gsl_select", [buffer = std::vector<double>()](const std::vector<double>& v) mutable {
        present(v, buffer);
        return gsl_stats_median(buffer.data(), 1, buffer.size());
    });
    add_sort("gsl", [](std::vector<double>& v) { gsl_sort(v.data(), 1, v.size()); });
    add_dual_sort("gsl", [](std::vector<double>& keys, std::vector<double>& companions) {
        gsl_sort2(keys.data(), 1, companions.data(), 1, keys.size());
    });
}

const Peer<> s_gsl(add_gsl);

} // namespace
} // namespace qmml::bench
