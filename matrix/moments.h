// Moments of a data matrix, one row per case and one column per variable. A missing value makes everything missing that
// it enters.
#pragma once

#include "matrix/status.h"

namespace qmml::matrix {

Status column_means(const double* data, int r, int c, double* means) noexcept;
Status sums_of_squared_deviations(const double* data, int r, int c, double* sums) noexcept;

// c x c cross products, of deviations from the means or, not centred, of the values.
Status cross_products(const double* data, int r, int c, double* result, bool centred) noexcept;

// c x c correlations, Pearson's or, not centred, about the origin. failed_column is written with Status::no_variance.
Status correlations(const double* data, int r, int c, double* result, bool centred, int& failed_column) noexcept;

} // namespace qmml::matrix
