// What the library's value statistics say of a column.
#pragma once

#include <string>
#include <vector>

namespace qmml::host {

struct Summary {
    int count = 0, missing = 0;
    double mean, sd, se, minimum, lower_quartile, median, upper_quartile, maximum, mode, sum;
};

Summary summarise(const std::vector<double>& values);

// One line for people, in the order of Summary; the titles go with it.
std::vector<std::string> summary_titles();
std::vector<std::string> summary_cells(const std::string& name, const Summary& summary);
std::vector<double> summary_numbers(const Summary& summary); // behind the two counts

} // namespace qmml::host
