// The separators of numbers in text: the user's numeric locale, unless the host has overridden it.
#pragma once

namespace qmml::platform {

struct Separators {
    char decimal;
    char list;
};

// Reads the environment each time and asks the system only when the locale's name has changed.
Separators separators() noexcept;

// A 0 leaves that separator to the locale.
void override_separators(char decimal, char list) noexcept;

} // namespace qmml::platform
