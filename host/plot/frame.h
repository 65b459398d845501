// What the plots have in common: a place in the picture, title, axes, grid, and a key for the curve.
#pragma once

#include "host/plot/axis.h"
#include "host/plot/svg.h"

namespace qmml::host::plot {

struct Box {
    double x = 0, y = 0, width = 460, height = 330;
};

struct Labels {
    std::string title, x, y;
    std::string curve; // what the coloured curve is; empty: none
};

class Frame {
public:
    // Draws all but the data. Without names, the y axis has ticks; otherwise it has a band for each name, the first one
    // at the top.
    Frame(Svg& svg, const Box& box, const Labels& labels, const Axis& x, const Axis& y,
          const std::vector<std::string>& names = {});

    double x(double value) const;
    double y(double value) const;
    double band_centre(std::size_t band) const;
    double band_height() const;
    Point at(double x_value, double y_value) const { return {x(x_value), y(y_value)}; }

    // Broken where a value is not inside the axes.
    void curve(const Points& values) const;

private:
    void draw_x_axis(const Labels& labels) const;
    void draw_titles(const Box& box, const Labels& labels) const;
    void draw_y_axis(const std::vector<Tick>& ticks) const;

    Svg& m_svg;
    Axis m_x, m_y;
    double m_left, m_top, m_right, m_bottom;
    std::size_t m_bands;
};

// Instead of a plot of what cannot be drawn.
void draw_remark(Svg& svg, const Box& box, const std::string& title, const std::string& remark);

} // namespace qmml::host::plot
