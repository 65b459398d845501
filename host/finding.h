// What a test found, as every command says it.
#pragma once

#include "host/table.h"

#include <string>
#include <utility>
#include <vector>

namespace qmml::host {

struct Finding {
    std::string title;
    Table details; // may be empty
    std::vector<std::pair<std::string, std::string>> figures;
    std::string conclusion; // a sentence

    std::string text() const; // for a terminal
    std::string line() const; // figures and conclusion on one line, for a page
};

} // namespace qmml::host
