#include "host/finding.h"

namespace qmml::host {

std::string Finding::text() const
{
    std::string text = title + "\n\n";
    if (!details.empty())
        text += details.text() + '\n';
    text += aligned_pairs(figures);
    return conclusion.empty() ? text : text + '\n' + conclusion + '\n';
}

std::string Finding::line() const
{
    std::string text = title;
    for (std::size_t i = 0; i < figures.size(); ++i) {
        const auto& [name, value] = figures[i];
        const bool relation = value.starts_with('<') || value.starts_with('=');
        text += (i ? ", " : ": ") + name + (relation ? " " : " = ") + value;
    }
    return text + ". " + conclusion;
}

} // namespace qmml::host
