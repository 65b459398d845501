#include "host/error.h"
#include "host/sample_tests.h"
#include "host/utf8.h"

#include <qmml/stattest.h>

#include <algorithm>
#include <cmath>
#include <map>

namespace qmml::host {

static constexpr std::size_t s_most_classes = 1000;

int correlate(const std::vector<double>& x, const std::vector<double>& y, PairStatistics& s)
{
    int error = 0;
    double intercept_xy = 0, slope_xy = 0;
    const int failed = ComputeSimpleCorrelation__(0, static_cast<int>(x.size()), x.data(), y.data(), s_no_value,
                                                  &s.intercept, &s.slope, &intercept_xy, &slope_xy, &s.r, &s.t, &s.df,
                                                  &s.p, &s.mean_x, &s.mean_y, &s.sd_x, &s.sd_y, &s.count, &error);
    return failed ? error : 0;
}

// "3.1 + 0.2 Wind - 4 Temp"
static std::string linear(double constant, const std::vector<std::pair<double, std::string>>& terms)
{
    std::string text = rounded(constant);
    for (const auto& [factor, name] : terms)
        text += (factor < 0 ? " - " : " + ") + rounded(std::fabs(factor)) + ' ' + name;
    return text;
}

Finding correlation_test(const Column& x, const Column& y, double level)
{
    PairStatistics s;
    const std::string x_name = printable(x.name), y_name = printable(y.name);
    if (const int error = correlate(x.values, y.values, s))
        throw Error(error == 2   ? "fewer than two complete pairs"
                    : error == 1 ? "a variable does not vary"
                                 : "out of memory");
    Table table({"", "n", "mean", "sd"});
    table.add({x_name, rounded(s.count), rounded(s.mean_x), rounded(s.sd_x)});
    table.add({y_name, rounded(s.count), rounded(s.mean_y), rounded(s.sd_y)});
    // Without a degree of freedom, or on a straight line, the library has no probability.
    const bool straight = s.df >= 1 && s.t == 0 && std::fabs(s.r) > 0.5;
    const bool tested = s.df >= 1 && !straight;
    return {"Correlation of " + x_name + " and " + y_name,
            table,
            {{"r", rounded(s.r)},
             {"|t|", tested ? rounded(s.t) : "-"},
             {"df", rounded(s.df)},
             {"p", tested ? probability(s.p) : "-"},
             {"line", y_name + " = " + linear(s.intercept, {{s.slope, x_name}})}},
            straight      ? "The points lie on a straight line."
            : !tested     ? "Too few pairs to conclude anything."
            : s.p < level ? "The variables are correlated (p " + probability(s.p) + ")."
                          : "No correlation is shown (p " + probability(s.p) + ")."};
}

Finding multiple_correlation_test(const Column& x1, const Column& x2, const Column& y, bool through_origin,
                                  double level, Plane& plane)
{
    double big_r = 0, f = 0, df = 0, p = 1, mean1 = 0, mean2 = 0, mean_y = 0, sd1 = 0, sd_y = 0, again = 0, count = 0;
    int error = 0;
    const int failed =
        ComputeMultipleCorrelation__(through_origin ? 1 : 0, static_cast<int>(y.values.size()), x1.values.data(),
                                     x2.values.data(), y.values.data(), s_no_value, &plane.b0, &plane.b1, &plane.b2,
                                     &big_r, &f, &df, &p, &mean1, &mean2, &mean_y, &sd1, &sd_y, &again, &count, &error);
    if (failed)
        throw Error(error == 2   ? "fewer than three complete cases"
                    : error == 1 ? "a variable does not vary"
                    : error == 3 ? "one predictor follows from the other"
                                 : "out of memory");
    const std::string name1 = printable(x1.name), name2 = printable(x2.name), name_y = printable(y.name);
    const bool tested = df >= 1 && std::isfinite(f);
    return {"Multiple correlation of " + name_y + " with " + name1 + " and " + name2,
            {},
            {{"R", rounded(big_r)},
             {"F", rounded(f)},
             {"df", "2 and " + rounded(df)},
             {"p", tested ? probability(p) : "-"},
             {"n", rounded(count)},
             {"plane", name_y + " = " + linear(plane.b0, {{plane.b1, name1}, {plane.b2, name2}})}},
            !tested     ? "Nothing is left over to test with: the plane goes through all points or there are too few."
            : p < level ? name_y + " depends on " + name1 + " and " + name2 + " (p " + probability(p) + ")."
                        : "No dependence is shown (p " + probability(p) + ")."};
}

namespace {

struct Contingency {
    std::vector<std::string> rows, columns;
    std::vector<double> counts; // row by row
};

std::map<std::string, std::size_t, std::less<>> places_of(const std::vector<std::string>& labels)
{
    std::map<std::string, std::size_t, std::less<>> places;
    for (const std::string& label : labels)
        places.emplace(label, places.size());
    return places;
}

Contingency count_pairs(const Column& x, const Column& y, const Column* weights)
{
    for (const Column* column : {&x, &y})
        if (count_labels(*column, s_most_classes) > s_most_classes)
            throw Error(printable(column->name) + " has more than 1000 different values: no classification");
    Contingency table{labels_in_order(x), labels_in_order(y), {}};
    table.counts.resize(table.rows.size() * table.columns.size());
    const auto rows = places_of(table.rows), columns = places_of(table.columns);
    for (std::size_t i = 0; i < x.cells.size(); ++i) {
        const auto row = rows.find(x.cells[i]), column = columns.find(y.cells[i]);
        const double weight = weights ? weights->values[i] : 1;
        if (row == rows.end() || column == columns.end() || std::isnan(weight))
            continue;
        if (weights && weight < 0)
            throw Error("a count in " + printable(weights->name) + " is negative");
        table.counts[row->second * table.columns.size() + column->second] += weight;
    }
    return table;
}

Table shown(const Contingency& c, const std::string& corner)
{
    constexpr std::size_t most_columns = 15, most_rows = 40;
    if (c.columns.size() > most_columns || c.rows.size() > most_rows)
        return {};
    std::vector<std::string> titles = {corner};
    for (const std::string& label : c.columns)
        titles.push_back(shortened(printable(label), 12));
    Table table(titles);
    for (std::size_t i = 0; i < c.rows.size(); ++i) {
        std::vector<std::string> row = {shortened(printable(c.rows[i]), 30)};
        for (std::size_t j = 0; j < c.columns.size(); ++j)
            row.push_back(rounded(c.counts[i * c.columns.size() + j]));
        table.add(row);
    }
    return table;
}

} // namespace

Finding chi_square_test(const Column& x, const Column& y, const Column* weights, double level)
{
    const Contingency c = count_pairs(x, y, weights);
    const std::string x_name = printable(x.name), y_name = printable(y.name);
    if (c.rows.size() < 2 || c.columns.size() < 2)
        throw Error((c.rows.size() < 2 ? x_name : y_name) + " has fewer than two different values");
    double chi_square = 0, p = 1;
    int df = 0, error = 0;
    if (ComputeChiSquareForNbyMTable__(0, static_cast<int>(c.columns.size()), static_cast<int>(c.rows.size()),
                                       c.counts.data(), &chi_square, &df, &p, &error) != 0)
        throw Error(error == 1 ? "the table has no counts" : "out of memory");
    return {"Chi-square test of " + x_name + " and " + y_name,
            shown(c, x_name + " \\ " + y_name),
            {{"chi-square", rounded(chi_square)}, {"df", std::to_string(df)}, {"p", probability(p)}},
            p < level ? "The two are not independent (p " + probability(p) + ")."
                      : "No dependence is shown (p " + probability(p) + ")."};
}

} // namespace qmml::host
