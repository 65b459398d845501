#include "host/plot/frame.h"

#include <algorithm>

namespace qmml::host::plot {

static constexpr double s_title_size = 15, s_label_size = 12, s_tick_size = 11;
static constexpr double s_widest_name = 150;

static double widest(const std::vector<std::string>& texts)
{
    double width = 0;
    for (const std::string& text : texts)
        width = std::max(width, text_width(text, s_tick_size));
    return width;
}

Frame::Frame(Svg& svg, const Box& box, const Labels& labels, const Axis& x, const Axis& y,
             const std::vector<std::string>& names)
    : m_svg(svg), m_x(x), m_y(y), m_left(box.x + 12), m_top(box.y + (labels.curve.empty() ? 40 : 56)),
      m_right(box.x + box.width - 20), m_bottom(box.y + box.height - 48),
      m_bands(std::max<std::size_t>(names.size(), 1))
{
    std::vector<std::string> side;
    std::vector<Tick> ticks;
    if (names.empty())
        ticks = m_y.ticks(std::clamp(static_cast<int>((m_bottom - m_top) / 36), 2, 8));
    side.reserve(std::max(ticks.size(), names.size()));
    for (const Tick& tick : ticks)
        side.push_back(tick.label);
    for (const std::string& name : names)
        side.push_back(fitted(name, s_tick_size, s_widest_name));
    m_left += widest(side) + 8 + (labels.y.empty() ? 0 : s_label_size + 6);

    m_svg.rectangle({m_left, m_top}, m_right - m_left, m_bottom - m_top, "#ffffff", "none");
    draw_y_axis(ticks);
    for (std::size_t i = 0; i < names.size(); ++i)
        m_svg.text({m_left - 8, band_centre(i) + 4}, side[i], {s_tick_size, Anchor::end, s_ink});
    draw_x_axis(labels);
    draw_titles(box, labels);
}

double Frame::x(double value) const
{
    return m_left + m_x.position(value) * (m_right - m_left);
}

double Frame::y(double value) const
{
    return m_bottom - m_y.position(value) * (m_bottom - m_top);
}

double Frame::band_height() const
{
    return (m_bottom - m_top) / static_cast<double>(m_bands);
}

double Frame::band_centre(std::size_t band) const
{
    return m_top + (static_cast<double>(band) + 0.5) * band_height();
}

void Frame::draw_y_axis(const std::vector<Tick>& ticks) const
{
    for (const auto& [value, label] : ticks) {
        m_svg.line({m_left, y(value)}, {m_right, y(value)}, s_rule, 1);
        m_svg.text({m_left - 7, y(value) + 4}, label, {s_tick_size, Anchor::end, s_grey});
    }
}

void Frame::draw_x_axis(const Labels& labels) const
{
    // As many ticks as have room beside each other.
    int most = std::clamp(static_cast<int>((m_right - m_left) / 50), 2, 10);
    std::vector<Tick> ticks = m_x.ticks(most);
    const auto crowded = [&] {
        double width = 0;
        for (const Tick& tick : ticks)
            width = std::max(width, text_width(tick.label, s_tick_size) + 10);
        return ticks.size() > 1 && width > x(ticks[1].value) - x(ticks[0].value);
    };
    while (crowded() && most > 1)
        ticks = m_x.ticks(--most);
    for (const auto& [value, label] : ticks) {
        m_svg.line({x(value), m_top}, {x(value), m_bottom}, s_rule, 1);
        m_svg.line({x(value), m_bottom}, {x(value), m_bottom + 4}, s_grey, 1);
        m_svg.text({x(value), m_bottom + 17}, label, {s_tick_size, Anchor::middle, s_grey});
    }
    m_svg.line({m_left, m_bottom}, {m_right, m_bottom}, s_grey, 1);
    m_svg.text({(m_left + m_right) / 2, m_bottom + 36}, fitted(labels.x, s_label_size, m_right - m_left),
               {s_label_size, Anchor::middle});
}

void Frame::draw_titles(const Box& box, const Labels& labels) const
{
    m_svg.text({box.x + 14, box.y + 24}, fitted(labels.title, s_title_size, box.width - 28),
               {s_title_size, Anchor::start, s_ink, true});
    if (!labels.y.empty())
        m_svg.text({box.x + 20, (m_top + m_bottom) / 2}, fitted(labels.y, s_label_size, m_bottom - m_top),
                   {s_label_size, Anchor::middle, s_ink, false, true});
    if (labels.curve.empty())
        return;
    m_svg.line({box.x + 14, box.y + 40}, {box.x + 34, box.y + 40}, s_vermilion, 2);
    m_svg.text({box.x + 40, box.y + 44}, fitted(labels.curve, s_tick_size, box.width - 54),
               {s_tick_size, Anchor::start, s_grey});
}

void Frame::curve(const Points& values) const
{
    Points stretch;
    for (const auto& [x_value, y_value] : values)
        if (x_value >= m_x.low && x_value <= m_x.high && y_value >= m_y.low && y_value <= m_y.high) {
            stretch.push_back(at(x_value, y_value));
        } else {
            m_svg.curve(stretch, s_vermilion, 2);
            stretch.clear();
        }
    m_svg.curve(stretch, s_vermilion, 2);
}

void draw_remark(Svg& svg, const Box& box, const std::string& title, const std::string& remark)
{
    svg.text({box.x + 14, box.y + 24}, fitted(title, s_title_size, box.width - 28),
             {s_title_size, Anchor::start, s_ink, true});
    svg.text({box.x + box.width / 2, box.y + box.height / 2}, remark, {s_label_size, Anchor::middle, s_grey});
}

} // namespace qmml::host::plot
