#pragma once

#include "matrix/status.h"

namespace qmml::matrix {

// c = a b, each element summed with k ascending, product and sum rounded apart. Status::singular when the shapes do not
// conform, c then being untouched. c shares no storage with a or b.
Status multiply(double* c, int c_rows, int c_cols, const double* a, int a_rows, int a_cols, const double* b, int b_rows,
                int b_cols) noexcept;

} // namespace qmml::matrix
