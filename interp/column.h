// A program over columns.
#pragma once

#include "interp/program.h"

namespace qmml::interp {

// result[i] for n cases, columns[v][i] being variable v; a null column is missing throughout. False when memory is
// short; nothing is written then.
bool evaluate_column(const Program& program, const Graph& graph, double* result, int n,
                     const double* const* columns) noexcept;

} // namespace qmml::interp
