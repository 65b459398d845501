// Tests that need no data file, only what is known of the samples.
#pragma once

#include <CLI/CLI.hpp>

namespace qmml::host {

void add_level_option(CLI::App& test, double& level);
void add_summary_tests(CLI::App& tests); // z and binomial

} // namespace qmml::host
