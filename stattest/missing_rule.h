// Which values the tests and fits with a caller's marker leave out.
#pragma once

#include <qmml/missing.h>

#include "core/compare.h"

namespace qmml::stattest {

class MissingRule {
public:
    explicit MissingRule(double marker) noexcept
        : m_marker(marker), m_marks_numbers(!is_nan(marker)), m_marks_nan(is_nan(marker) && valid8(&marker))
    {
    }

    bool operator()(double value) const noexcept
    {
        if (is_nan(value))
            return m_marks_nan || !valid8(&value);
        return m_marks_numbers && is_equal(value, m_marker);
    }

private:
    double m_marker;
    bool m_marks_numbers, m_marks_nan;
};

} // namespace qmml::stattest
