// The subcommands. Each function adds one, whose callback does the work and throws an Error when it cannot.
#pragma once

#include <CLI/CLI.hpp>

namespace qmml::host {

void add_eval_command(CLI::App& app);
void add_dist_command(CLI::App& app);
void add_matrix_command(CLI::App& app);
void add_describe_command(CLI::App& app);
void add_test_command(CLI::App& app);
void add_fit_command(CLI::App& app);
void add_rank_command(CLI::App& app);
void add_lowess_command(CLI::App& app);
void add_select_command(CLI::App& app);
void add_report_command(CLI::App& app);
void add_functions_command(CLI::App& app);

} // namespace qmml::host
