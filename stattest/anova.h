// One-way analysis of variance, Levene's test.
#pragma once

namespace qmml::stattest {

struct VarianceRatio {
    double f = 0, df_between = 0, df_within = 0, p = 1;
};

struct Anova {
    VarianceRatio main, levene;
};

bool one_way_anova(const double* data, int groups, const int* sizes, bool with_levene, Anova& result,
                   int& error) noexcept;

} // namespace qmml::stattest
