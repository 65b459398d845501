// A formula of the user's, with its errors shown in place.
#pragma once

#include "host/language.h"

#include <qmml/interp.h>

#include <memory>
#include <span>
#include <string>
#include <string_view>

namespace qmml::host {

// Throws an Error that shows the formula with a caret under the place.
class Formula {
public:
    Formula(std::string text, std::span<const std::string_view> variables, Separators separators);

    void check_strictly();
    void evaluate(double* results, int count, const double* const* columns);
    const std::string& target_name() const noexcept { return m_target.name; } // empty when the text gives none

private:
    [[noreturn]] void fail() const;

    std::string m_text;
    Target m_target;
    std::unique_ptr<ExInterpreter> m_interpreter;
};

} // namespace qmml::host
