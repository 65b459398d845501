#include "host/table.h"

#include "host/utf8.h"

#include <algorithm>
#include <cmath>
#include <cstdio>

namespace qmml::host {

std::string rounded(double value, int digits)
{
    if (std::isnan(value))
        return "-";
    if (std::isinf(value))
        return value > 0 ? "infinite" : "-infinite";
    char text[64];
    std::snprintf(text, sizeof text, "%.*g", digits, value);
    return text;
}

std::string probability(double p)
{
    return p < 0.0001 ? "< 0.0001" : "= " + rounded(p, 4);
}

std::string Table::text() const
{
    std::vector<std::size_t> widths;
    for (const auto& row : m_rows) {
        widths.resize(std::max(widths.size(), row.size()));
        for (std::size_t i = 0; i < row.size(); ++i)
            widths[i] = std::max(widths[i], count_characters(row[i]));
    }
    std::string text;
    for (const auto& row : m_rows) {
        for (std::size_t i = 0; i < row.size(); ++i) {
            const std::string blanks(widths[i] - count_characters(row[i]), ' ');
            text += i == 0 ? row[i] + (row.size() > 1 ? blanks : "") : "  " + blanks + row[i];
        }
        text += '\n';
    }
    return text;
}

std::string aligned_pairs(const std::vector<std::pair<std::string, std::string>>& pairs)
{
    std::size_t width = 0;
    for (const auto& pair : pairs)
        width = std::max(width, count_characters(pair.first));
    std::string text;
    for (const auto& [name, value] : pairs)
        text += name + std::string(width - count_characters(name) + 2, ' ') + value + '\n';
    return text;
}

} // namespace qmml::host
