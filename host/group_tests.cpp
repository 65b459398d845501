#include "host/error.h"
#include "host/sample_tests.h"
#include "host/summary.h"

#include <qmml/stattest.h>

#include <cmath>

namespace qmml::host {
namespace {

Table table_of(const Groups& groups)
{
    Table table({groups.group_name, "n", "mean", "sd", "median"});
    for (const plot::Group& group : groups.groups) {
        const Summary s = summarise(group.values);
        table.add({group.label, std::to_string(s.count), rounded(s.mean), rounded(s.sd), rounded(s.median)});
    }
    return table;
}

struct Joined {
    std::vector<double> values;
    std::vector<int> sizes, indices;
};

Joined joined(const Groups& groups)
{
    Joined all;
    for (std::size_t i = 0; i < groups.groups.size(); ++i) {
        const std::vector<double>& values = groups.groups[i].values;
        all.values.insert(all.values.end(), values.begin(), values.end());
        all.sizes.push_back(static_cast<int>(values.size()));
        all.indices.insert(all.indices.end(), values.size(), static_cast<int>(i));
    }
    return all;
}

std::string title_of(const char* test, const Groups& groups)
{
    return std::string(test) + " of " + groups.value_name + " by " + groups.group_name;
}

// "The means of the groups differ (p < 0.0001)."
std::string conclusion_of(const char* what, double p, double level)
{
    if (std::isnan(p))
        return "The values do not vary: nothing can be concluded.";
    return (p < level ? std::string("The ") + what + " of the groups differ"
                      : std::string("No difference between the ") + what + " of the groups is shown") +
           " (p " + probability(p) + ").";
}

struct Variances {
    double f = 0, df1 = 0, df2 = 0, p = 1, levene_f = 0, levene_df1 = 0, levene_df2 = 0, levene_p = 1;
};

Variances analyse(const Groups& groups)
{
    Joined all = joined(groups);
    if (groups.groups.size() < 2)
        throw Error("fewer than two groups with values in " + groups.group_name);
    Variances v;
    int error = 0;
    if (OneWayAnova__(1, 0, all.values.data(), static_cast<int>(all.sizes.size()), all.sizes.data(), &v.f, &v.df1,
                      &v.df2, &v.p, &v.levene_f, &v.levene_df1, &v.levene_df2, &v.levene_p, &error) != 0)
        throw Error(error == 1   ? "too few values for so many groups"
                    : error == 2 ? "the values are too large"
                                 : "out of memory");
    return v;
}

Finding f_test(const char* test, const char* what, const Groups& groups, double f, double df1, double df2, double p,
               double level)
{
    // Groups without variance about means that do not differ: the library divides 0 by 0.
    if (std::isnan(f))
        p = s_no_value;
    return {
        title_of(test, groups),
        table_of(groups),
        {{"F", rounded(f)}, {"df", rounded(df1) + " and " + rounded(df2)}, {"p", std::isnan(p) ? "-" : probability(p)}},
        conclusion_of(what, p, level)};
}

} // namespace

Finding analysis_of_variance(const Groups& groups, double level)
{
    const Variances v = analyse(groups);
    return f_test("One-way analysis of variance", "means", groups, v.f, v.df1, v.df2, v.p, level);
}

Finding levene_test(const Groups& groups, double level)
{
    const Variances v = analyse(groups);
    return f_test("Levene's test", "variances", groups, v.levene_f, v.levene_df1, v.levene_df2, v.levene_p, level);
}

Finding kruskal_wallis_test(const Groups& groups, double level)
{
    Joined all = joined(groups);
    const std::size_t k = groups.groups.size();
    if (k < 2)
        throw Error("fewer than two groups with values in " + groups.group_name);
    std::vector<double> counts(k), rank_sums(k);
    double h = 0, df = 0, p = 1;
    int error = 0;
    if (KruskalAnovaTest__(0, static_cast<int>(all.values.size()), static_cast<int>(k), all.indices.data(),
                           all.values.data(), counts.data(), rank_sums.data(), &h, &df, &error, &p) != 0)
        throw Error(error == 1 ? "fewer than three values" : "out of memory");
    Table table({groups.group_name, "n", "median", "mean rank"});
    for (std::size_t i = 0; i < k; ++i)
        table.add({groups.groups[i].label, rounded(counts[i]), rounded(summarise(groups.groups[i].values).median),
                   rounded(rank_sums[i] / counts[i])});
    return {title_of("Kruskal-Wallis test", groups),
            table,
            {{"H", rounded(h)}, {"df", rounded(df)}, {"p", probability(p)}},
            conclusion_of("distributions", p, level)};
}

} // namespace qmml::host
