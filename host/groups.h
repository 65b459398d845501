// A column's values by what another column says.
#pragma once

#include "host/data_file.h"
#include "host/plot/plots.h"

namespace qmml::host {

struct Groups {
    std::string value_name, group_name; // fit for printing, as are the labels
    std::vector<plot::Group> groups;    // numbers in their order, then texts in theirs; none without values
};

// Without the rows in which either is missing.
Groups split(const Column& value, const Column& by);

// How many different labels a column has, counted no further than one above the limit.
std::size_t count_labels(const Column& column, std::size_t limit);

// Numbers by value, before texts.
std::vector<std::string> labels_in_order(const Column& column);

} // namespace qmml::host
