#include "host/plot/svg.h"

#include "host/utf8.h"

#include <algorithm>
#include <cmath>
#include <cstdio>

namespace qmml::host::plot {

static constexpr double s_character_width = 0.58; // of the size

// Hundredths of a unit are finer than any screen.
static std::string coordinate(double value)
{
    char text[32];
    std::snprintf(text, sizeof text, "%.2f", std::clamp(value, -1e5, 1e5));
    std::string number = text;
    number.erase(number.find_last_not_of('0') + 1);
    if (number.ends_with('.'))
        number.pop_back();
    return number == "-0" ? "0" : number;
}

Svg::Svg(double width, double height, std::string_view title)
{
    const std::string w = coordinate(width), h = coordinate(height), name = escaped(printable(title));
    m_body = "<svg xmlns=\"http://www.w3.org/2000/svg\" width=\"" + w + "\" height=\"" + h + "\" viewBox=\"0 0 " + w +
             ' ' + h + "\" role=\"img\" aria-label=\"" + name +
             "\" font-family=\"Helvetica, Arial, 'DejaVu Sans', sans-serif\">\n<title>" + name + "</title>\n";
    rectangle({0, 0}, width, height, s_paper, "none");
}

void Svg::point_attribute(const char* name, double value)
{
    m_body += std::string(" ") + name + "=\"" + coordinate(value) + '"';
}

void Svg::line(Point from, Point to, const char* colour, double width)
{
    m_body += "<line";
    point_attribute("x1", from.first);
    point_attribute("y1", from.second);
    point_attribute("x2", to.first);
    point_attribute("y2", to.second);
    m_body += std::string(" stroke=\"") + colour + '"';
    point_attribute("stroke-width", width);
    m_body += "/>\n";
}

void Svg::rectangle(Point corner, double width, double height, const char* fill, const char* stroke)
{
    m_body += "<rect";
    point_attribute("x", corner.first);
    point_attribute("y", corner.second);
    point_attribute("width", std::max(width, 0.0));
    point_attribute("height", std::max(height, 0.0));
    m_body += std::string(" fill=\"") + fill + "\" stroke=\"" + stroke + "\"/>\n";
}

void Svg::curve(const Points& points, const char* colour, double width)
{
    if (points.size() < 2)
        return;
    m_body += "<polyline points=\"";
    for (const auto& [x, y] : points)
        m_body += coordinate(x) + ',' + coordinate(y) + ' ';
    m_body.back() = '"';
    m_body += std::string(" fill=\"none\" stroke=\"") + colour + '"';
    point_attribute("stroke-width", width);
    m_body += " stroke-linejoin=\"round\" stroke-linecap=\"round\"/>\n";
}

void Svg::dots(const Points& points, double radius, const char* colour, double opacity)
{
    Points places; // one dot is enough where several would cover each other
    places.reserve(points.size());
    for (const auto& [x, y] : points)
        places.emplace_back(std::round(x * 2) / 2, std::round(y * 2) / 2);
    std::ranges::sort(places);
    places.erase(std::unique(places.begin(), places.end()), places.end());

    m_body += std::string("<g fill=\"") + colour + '"';
    point_attribute("fill-opacity", opacity);
    m_body += ">\n";
    for (const auto& [x, y] : places) {
        m_body += "<circle";
        point_attribute("cx", x);
        point_attribute("cy", y);
        point_attribute("r", radius);
        m_body += "/>\n";
    }
    m_body += "</g>\n";
}

void Svg::text(Point at, std::string_view text, const TextStyle& style)
{
    static constexpr const char* s_anchors[] = {"start", "middle", "end"};
    m_body += "<text";
    point_attribute("x", at.first);
    point_attribute("y", at.second);
    point_attribute("font-size", style.size);
    m_body += std::string(" fill=\"") + style.colour + "\" text-anchor=\"" +
              s_anchors[static_cast<std::size_t>(style.anchor)] + '"';
    if (style.bold)
        m_body += " font-weight=\"bold\"";
    if (style.upwards)
        m_body += " transform=\"rotate(-90 " + coordinate(at.first) + ' ' + coordinate(at.second) + ")\"";
    m_body += '>' + escaped(printable(text)) + "</text>\n";
}

std::string Svg::document() const
{
    return "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n" + element();
}

std::string Svg::element() const
{
    return m_body + "</svg>\n";
}

double text_width(std::string_view text, double size)
{
    return s_character_width * size * static_cast<double>(count_characters(text));
}

std::string fitted(std::string_view text, double size, double width)
{
    const double room = std::max(1.0, width / (s_character_width * size));
    return shortened(printable(text), static_cast<std::size_t>(room));
}

} // namespace qmml::host::plot
