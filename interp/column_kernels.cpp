#include "interp/column_kernels.h"

#include <algorithm>

namespace qmml::interp {

std::span<const ColumnKernels* const> column_kernel_variants() noexcept
{
    static constexpr const ColumnKernels* s_variants[] = {
#ifdef QMML_X86_VARIANTS
        &s_avx512_kernels,
        &s_avx2_kernels,
#endif
        &s_baseline_kernels,
    };
    return s_variants;
}

static const ColumnKernels* s_chosen = nullptr;

const ColumnKernels& column_kernels() noexcept
{
    static const ColumnKernels* const best =
        *std::ranges::find_if(column_kernel_variants(), [](const ColumnKernels* k) { return k->supported(); });
    return s_chosen != nullptr ? *s_chosen : *best;
}

void choose_column_kernels(const ColumnKernels* kernels) noexcept
{
    s_chosen = kernels;
}

} // namespace qmml::interp
