#include "host/report_page.h"

#include "host/utf8.h"

#include <cmath>
#include <cstdio>

namespace qmml::host {

// Colours that read on a light and on a dark page; the pictures bring their own light ground.
static constexpr const char* s_style = R"(
:root { color-scheme: light dark; }
body { font: 15px/1.5 Helvetica, Arial, 'DejaVu Sans', sans-serif; max-width: 62rem; margin: 2rem auto; padding: 0 1rem; }
h1 { font-size: 1.7rem; margin-bottom: 0.2rem; }
h2 { font-size: 1.25rem; margin-top: 2.2rem; border-bottom: 1px solid rgba(128, 128, 128, 0.5); }
.scroll { overflow-x: auto; }
table { border-collapse: collapse; font-variant-numeric: tabular-nums; font-size: 0.86rem; }
th, td { padding: 0.25rem 0.6rem; text-align: right; white-space: nowrap; border-bottom: 1px solid rgba(128, 128, 128, 0.25); }
th:first-child, td:first-child { text-align: left; }
thead th { border-bottom: 2px solid rgba(128, 128, 128, 0.6); }
figure { margin: 1.2rem 0; break-inside: avoid; }
figure svg { max-width: 100%; height: auto; border: 1px solid rgba(128, 128, 128, 0.35); border-radius: 6px; margin: 0 0.3rem 0.3rem 0; }
figcaption { font-size: 0.9rem; }
figcaption p { margin: 0.15rem 0; }
@media print { body { max-width: none; margin: 0; font-size: 10pt; } h2 { break-after: avoid; } figure svg { max-width: 49%; } }
)";

ReportPage::ReportPage(std::string_view title)
{
    const std::string name = escaped(printable(title));
    m_body = "<!DOCTYPE html>\n<html lang=\"en\" xmlns=\"http://www.w3.org/1999/xhtml\">\n<head>\n"
             "<meta charset=\"utf-8\"/>\n"
             "<meta name=\"viewport\" content=\"width=device-width, initial-scale=1\"/>\n<title>" +
             name + "</title>\n<style>" + s_style + "</style>\n</head>\n<body>\n<h1>" + name + "</h1>\n";
}

void ReportPage::element(const char* name, std::string_view text)
{
    m_body += std::string("<") + name + '>' + escaped(printable(text)) + "</" + name + ">\n";
}

void ReportPage::section(std::string_view heading)
{
    element("h2", heading);
}

void ReportPage::paragraph(std::string_view text)
{
    element("p", text);
}

void ReportPage::row(const std::vector<std::string>& cells, const char* tag, const std::vector<double>* shades)
{
    m_body += "<tr>";
    for (std::size_t i = 0; i < cells.size(); ++i) {
        const double shade = shades && i < shades->size() ? (*shades)[i] : 0;
        m_body += std::string("<") + tag;
        if (std::fabs(shade) > 0.005) { // false for a NaN
            char style[96];
            std::snprintf(style, sizeof style, " style=\"background: rgba(%s, %.2f)\"",
                          shade > 0 ? "0, 114, 178" : "213, 94, 0", 0.55 * std::fabs(shade));
            m_body += style;
        }
        m_body += '>' + escaped(printable(cells[i])) + "</" + tag + '>';
    }
    m_body += "</tr>\n";
}

void ReportPage::shaded_table(const Table& table, const std::vector<std::vector<double>>& shades)
{
    m_body += "<div class=\"scroll\"><table>\n<thead>";
    row(table.rows()[0], "th", nullptr);
    m_body += "</thead>\n<tbody>\n";
    for (std::size_t i = 1; i < table.rows().size(); ++i)
        row(table.rows()[i], "td", i - 1 < shades.size() ? &shades[i - 1] : nullptr);
    m_body += "</tbody>\n</table></div>\n";
}

void ReportPage::table(const Table& table)
{
    shaded_table(table, {});
}

void ReportPage::figure(const std::vector<plot::Svg>& pictures, const std::vector<std::string>& lines)
{
    m_body += "<figure>\n";
    for (const plot::Svg& picture : pictures)
        m_body += picture.element();
    if (!lines.empty()) {
        m_body += "<figcaption>\n";
        for (const std::string& line : lines)
            paragraph(line);
        m_body += "</figcaption>\n";
    }
    m_body += "</figure>\n";
}

std::string ReportPage::text() const
{
    return m_body + "</body>\n</html>\n";
}

} // namespace qmml::host
