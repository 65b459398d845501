// Kruskal-Wallis test.
#pragma once

namespace qmml::stattest {

struct KruskalWallis {
    double h = 0, df = 0, p = 1;
};

// Sorts the values with their groups and replaces them by mid-ranks; counts and rank_sums have one entry per group.
// n >= 3.
void kruskal_wallis_test(int* group, double* values, int n, int groups, double* counts, double* rank_sums,
                         KruskalWallis& result) noexcept;

} // namespace qmml::stattest
