#include "host/summary.h"

#include "host/data_file.h"
#include "host/error.h"
#include "host/table.h"
#include "host/utf8.h"

#include <qmml/descstat.h>

#include <algorithm>
#include <cmath>

namespace qmml::host {

Summary summarise(const std::vector<double>& values)
{
    Summary s{};
    const auto present_count = std::ranges::count_if(values, [](double value) { return !std::isnan(value); });
    s.count = static_cast<int>(present_count);
    s.missing = static_cast<int>(values.size()) - s.count;
    double quartiles[3] = {s_no_value, s_no_value, s_no_value};
    if (s.count == 0) { // the library takes a count of 0 for "as far as it goes"
        s.mean = s.sd = s.se = s.minimum = s.maximum = s.median = s.mode = s.sum = s_no_value;
    } else {
        const double* const data = values.data();
        const int n = static_cast<int>(values.size());
        const bool computed =
            ValMean(data, 1, n, &s.mean) && ValStDeviation(data, 1, n, &s.sd) && ValStError(data, 1, n, &s.se) &&
            ValMin(data, 1, n, &s.minimum) && ValQuartiles(data, 1, n, quartiles) && ValMedian(data, 1, n, &s.median) &&
            ValMax(data, 1, n, &s.maximum) && ValMode(data, 1, n, &s.mode) && ValSum(data, 1, n, &s.sum);
        if (!computed)
            throw Error("out of memory");
    }
    s.lower_quartile = quartiles[0];
    s.upper_quartile = quartiles[2];
    return s;
}

std::vector<std::string> summary_titles()
{
    return {"column", "n", "missing", "mean", "sd", "se", "min", "q1", "median", "q3", "max", "mode", "sum"};
}

std::vector<double> summary_numbers(const Summary& s)
{
    return {s.mean, s.sd, s.se, s.minimum, s.lower_quartile, s.median, s.upper_quartile, s.maximum, s.mode, s.sum};
}

std::vector<std::string> summary_cells(const std::string& name, const Summary& summary)
{
    std::vector<std::string> cells = {shortened(name, 40), std::to_string(summary.count),
                                      std::to_string(summary.missing)};
    for (const double value : summary_numbers(summary))
        cells.push_back(rounded(value));
    return cells;
}

} // namespace qmml::host
