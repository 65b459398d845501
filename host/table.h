// Aligned text for people: numbers rounded, a table of columns.
#pragma once

#include <string>
#include <utility>
#include <vector>

namespace qmml::host {

std::string rounded(double value, int digits = 6); // "-" for what is no number
std::string probability(double p);                 // "= 0.031", "< 0.0001"

// The first column is flush left, the others flush right.
class Table {
public:
    Table() = default;
    explicit Table(std::vector<std::string> titles) : m_rows{std::move(titles)} {}

    void add(std::vector<std::string> row) { m_rows.push_back(std::move(row)); }
    bool empty() const { return m_rows.size() < 2; }
    const std::vector<std::vector<std::string>>& rows() const { return m_rows; } // the titles first

    std::string text() const;

private:
    std::vector<std::vector<std::string>> m_rows;
};

// Names flush left, what they stand for behind them.
std::string aligned_pairs(const std::vector<std::pair<std::string, std::string>>& pairs);

} // namespace qmml::host
