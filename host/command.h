// The subcommands. Each function adds one, whose callback does the work and throws an Error when it cannot.
#pragma once

#include <CLI/CLI.hpp>

namespace qmml::host {

void add_eval_command(CLI::App& app);
void add_dist_command(CLI::App& app);
void add_matrix_command(CLI::App& app);
void add_functions_command(CLI::App& app);

} // namespace qmml::host
