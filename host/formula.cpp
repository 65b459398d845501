#include "host/formula.h"

#include "host/error.h"

#include <qmml/platform.h>

#include <algorithm>

namespace qmml::host {

Formula::Formula(std::string text, std::span<const std::string_view> variables, Separators separators)
    : m_text(std::move(text)), m_target(find_target(m_text, variables, separators))
{
    QMMLSetSeparators(separators.decimal, separators.list);
    const int selector = !variables.empty() && variables[0] == "T" ? -1 : static_cast<int>(variables.size());
    m_interpreter = std::make_unique<ExInterpreter>(m_text.c_str(), selector);
}

void Formula::check_strictly()
{
    if (!m_interpreter->ExpresCheck())
        fail();
}

void Formula::evaluate(double* results, int count, const double* const* columns)
{
    if (m_interpreter->ExpresColumn(results, count, columns) != count)
        fail();
}

// One line for the formula and one for the caret: a character takes one place, a control character shows as a blank.
static std::string with_caret(std::string_view text, std::size_t position)
{
    std::string shown = "  ", caret = "  ";
    for (std::size_t i = 0; i < text.size(); ++i) {
        const auto byte = static_cast<unsigned char>(text[i]);
        const bool continues_a_character = (byte & 0xc0) == 0x80;
        shown += byte < ' ' || byte == 0x7f ? ' ' : text[i];
        if (i < position && !continues_a_character)
            caret += ' ';
    }
    return shown + '\n' + caret + '^';
}

void Formula::fail() const
{
    std::size_t position = m_target.start;
    if (!m_target.incomplete)
        position += static_cast<std::size_t>(std::max(0, m_interpreter->GetInterpreterErrorPos()));
    position = std::min(position, m_text.size());
    std::string message = "formula: " + std::string(m_interpreter->GetInterpreterErrorDescr()) + " (error " +
                          std::to_string(m_interpreter->GetInterpreterError()) + ")";
    if (m_target.incomplete)
        message += "; \"" + m_target.name + "\" is unknown and would be a name for the result, but no = follows";
    throw Error(message + '\n' + with_caret(m_text, position));
}

} // namespace qmml::host
