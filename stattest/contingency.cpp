#include "stattest/contingency.h"

#include <qmml/distrib.h>

#include "core/block.h"
#include "core/compare.h"
#include "stattest/error.h"

#include <algorithm>
#include <cstdint>

namespace qmml::stattest {

bool chi_square_of_table(const double* table, int rows, int columns, ChiSquare& result, int& error) noexcept
{
    error = s_no_memory;
    const std::int64_t r = std::max(rows, 0), c = std::max(columns, 0);
    Block<double> row_totals(r), column_totals(c);
    if (!row_totals || !column_totals)
        return false;
    const double* const row_sums = row_totals.data();
    double* const column_sums = column_totals.data();
    double total = 0;
    for (std::int64_t i = 0; i < r && c > 0; ++i) {
        const double* const row = table + i * c;
        double sum = 0;
        for (std::int64_t j = 0; j < c; ++j) {
            column_sums[j] += row[j];
            sum += row[j];
            total += row[j];
        }
        row_totals[static_cast<std::size_t>(i)] = sum;
    }

    error = 1;
    if (is_less(total, 1.0) || c < 2 || r < 2)
        return false;
    for (std::int64_t i = 0; i < r; ++i)
        for (std::int64_t j = 0; j < c; ++j) {
            const double expected = row_sums[i] * column_sums[j] / total;
            if (is_greater(expected, 0.0)) {
                const double difference = table[i * c + j] - expected;
                result.chi_square += difference * difference / expected;
            }
        }
    // The degrees of freedom are an int; beyond its range the product stops at its end.
    result.df = static_cast<int>(std::min<std::int64_t>((r - 1) * (c - 1), INT32_MAX));
    if (is_greater(result.chi_square, 0.0) && result.df > 0)
        result.p = 1 - i_chi2(result.chi_square, result.df);
    return true;
}

} // namespace qmml::stattest
