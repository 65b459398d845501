// Boost's sorts.
#include "descstat_bench.h"

#include <boost/sort/pdqsort/pdqsort.hpp>
#include <boost/sort/spreadsort/spreadsort.hpp>

namespace qmml::bench {
namespace {

constexpr auto s_pdqsort = [](auto& v) { boost::sort::pdqsort(v.begin(), v.end()); };

void add_boost()
{
    add_sort("boost_spreadsort",
             [](std::vector<double>& v) { boost::sort::spreadsort::spreadsort(v.begin(), v.end()); });
    add_sort("boost_pdqsort", s_pdqsort);
    add_rank("boost_pdqsort", rank_by(s_pdqsort));
    add_dual_sort("boost_pdqsort", dual_by(s_pdqsort));
}

const Peer<> s_boost(add_boost);

} // namespace
} // namespace qmml::bench
