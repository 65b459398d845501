// A self-contained HTML page: text, tables and pictures, no scripts and nothing to load. It is well-formed XML too.
#pragma once

#include "host/plot/svg.h"
#include "host/table.h"

#include <string>
#include <string_view>
#include <vector>

namespace qmml::host {

class ReportPage {
public:
    explicit ReportPage(std::string_view title);

    void section(std::string_view heading);
    void paragraph(std::string_view text);
    void table(const Table& table);
    // Of square tables a cell's shade tells how strong it is: -1 to 1, or a NaN for no shade.
    void shaded_table(const Table& table, const std::vector<std::vector<double>>& shades);

    // Pictures side by side where there is room, what they say below.
    void figure(const std::vector<plot::Svg>& pictures, const std::vector<std::string>& lines);

    std::string text() const;

private:
    void element(const char* name, std::string_view text);
    void row(const std::vector<std::string>& cells, const char* tag, const std::vector<double>* shades);

    std::string m_body;
};

} // namespace qmml::host
