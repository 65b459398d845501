// A self-contained SVG picture: shapes and texts with their own attributes, so that several fit into one page.
#pragma once

#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace qmml::host::plot {

using Point = std::pair<double, double>;
using Points = std::vector<Point>;

// Distinguishable with any colour vision, after Okabe and Ito (2002).
inline constexpr const char* s_blue = "#0072b2";
inline constexpr const char* s_light_blue = "#a6cee8";
inline constexpr const char* s_vermilion = "#d55e00";
inline constexpr const char* s_ink = "#222222";
inline constexpr const char* s_grey = "#5a5a5a";
inline constexpr const char* s_rule = "#e3e3e3";
inline constexpr const char* s_paper = "#fdfdfb";

enum class Anchor { start, middle, end };

struct TextStyle {
    double size = 12;
    Anchor anchor = Anchor::start;
    const char* colour = s_ink;
    bool bold = false;
    bool upwards = false; // turned by a quarter, around its own position
};

class Svg {
public:
    Svg(double width, double height, std::string_view title);

    void line(Point from, Point to, const char* colour, double width);
    void rectangle(Point corner, double width, double height, const char* fill, const char* stroke);
    void curve(const Points& points, const char* colour, double width);
    void dots(const Points& points, double radius, const char* colour, double opacity);
    void text(Point at, std::string_view text, const TextStyle& style);

    std::string document() const; // with an XML declaration
    std::string element() const;  // for a page

private:
    void point_attribute(const char* name, double value);

    std::string m_body;
};

// About as wide as a common sans serif draws it.
double text_width(std::string_view text, double size);
std::string fitted(std::string_view text, double size, double width); // cut to that width

} // namespace qmml::host::plot
