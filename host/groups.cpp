#include "host/groups.h"

#include "host/utf8.h"

#include <algorithm>
#include <map>
#include <set>
#include <unordered_set>

namespace qmml::host {

std::vector<std::string> labels_in_order(const Column& column)
{
    if (!column.numeric()) {
        std::set<std::string> labels(column.cells.begin(), column.cells.end());
        std::erase_if(labels, [](const std::string& label) { return is_missing_cell(label); });
        return {labels.begin(), labels.end()};
    }
    std::set<std::pair<double, std::string>> labels;
    for (std::size_t i = 0; i < column.cells.size(); ++i)
        if (!is_missing_cell(column.cells[i]))
            labels.emplace(column.values[i], column.cells[i]);
    std::vector<std::string> result;
    result.reserve(labels.size());
    for (const auto& label : labels)
        result.push_back(label.second);
    return result;
}

Groups split(const Column& value, const Column& by)
{
    Groups result{printable(value.name), printable(by.name), {}};
    std::map<std::string, std::size_t, std::less<>> places;
    for (const std::string& label : labels_in_order(by)) {
        places.emplace(label, result.groups.size());
        result.groups.push_back({printable(label), {}});
    }
    for (std::size_t i = 0; i < value.values.size(); ++i)
        if (!is_missing_cell(value.cells[i]) && !is_missing_cell(by.cells[i]))
            result.groups[places.find(by.cells[i])->second].values.push_back(value.values[i]);
    std::erase_if(result.groups, [](const plot::Group& group) { return group.values.empty(); });
    return result;
}

std::size_t count_labels(const Column& column, std::size_t limit)
{
    std::unordered_set<std::string_view> labels;
    for (const std::string& cell : column.cells)
        if (!is_missing_cell(cell) && labels.insert(cell).second && labels.size() > limit)
            break;
    return labels.size();
}

} // namespace qmml::host
