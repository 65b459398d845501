// The steps of the elimination over whole columns, one set per instruction set. All sets give the same bits.
//
// A step subtracts multiples of the pivot row from every other row. Each element takes its steps in order, but in a
// large matrix not all need to have taken them before the next pivot can be told: a column that was used, or that
// cannot hold the largest element, stays behind until it is needed or until the panel of steps ends. It is then read
// and written once instead of at every step.
#pragma once

#include "platform/levels.h"

#include <cstdint>

namespace qmml::matrix {

inline constexpr int s_longest_panel = 16;

enum class Use : int { none, in_panel, before_panel };

// An index is used as row and column at once: the exchange puts the pivot on the diagonal. An inverse is made in the
// caller's matrix, where vectors must not pass the end of a column; other columns are padded like the arrays by row and
// by column, which begin on cache lines.
struct Elimination {
    int n;
    std::int64_t stride; // between columns
    std::int64_t rows;   // of a column, those that are there: n, or with the padding
    std::int64_t padded; // the length of an array: a multiple of 16, or of 8 without panels
    bool inverse;        // else used rows and columns do not matter any more
    bool panels;         // else every step is taken by all at once; an inverse is then at most 64 x 64
    double* columns;
    double* magnitude; // by row: the bits to keep in the search, all but the sign; none when used or beyond n
    double* largest;   // by column, in long columns by place in the list: the largest magnitude, or above it when steps
                       // are pending; -1 when used or beyond n
    double* multiples; // by step and row: how often the pivot row is subtracted
    double* pivot_row; // by step and column: the pivot row after its division
    double* applied;   // by column: steps of the panel that it has taken
    Use* use;
    int* listed; // the columns that matter: those not used in ascending order, without panels the used ones after them
    int listed_count; // without panels of the first only
    int place;        // of the pivot's column in the list; without panels
    int* candidates;  // scratch, by column, like the next
    int* next;
    int steps; // in the panel so far
    int pivots[s_longest_panel];
};

struct Pivot {
    int row, column; // -1 when all that is left are NaNs
    double value;
};

struct EliminationKernels {
    // Each finds the next pivot too. The last step of all has none to find.
    Pivot (*begin)(Elimination& e) noexcept;
    Pivot (*step)(Elimination& e, const Pivot& pivot) noexcept;
    void (*close_panel)(Elimination& e) noexcept; // all pending steps
};

extern const EliminationKernels s_elimination_baseline, s_elimination_avx2, s_elimination_avx512;
inline constexpr platform::KernelSets<EliminationKernels> s_elimination_kernels = QMML_KERNEL_SETS(s_elimination);

} // namespace qmml::matrix
