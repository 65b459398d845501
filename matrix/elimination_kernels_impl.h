// The steps as templates over lanes. Included by one source per instruction set, each compiled for it: nothing in here
// may be instantiated for a type that two of those sources share.
#pragma once

#include "matrix/elimination_long_impl.h"
#include "matrix/elimination_panel_impl.h"
#include "matrix/elimination_single_impl.h"

namespace qmml::matrix {

template <class L>
struct EliminationSteps {
    using Begin = Pivot (*)(Elimination& e) noexcept;
    using Step = Pivot (*)(Elimination& e, const Pivot& pivot) noexcept;

    // By the cache lines of a column; first with panels, last those that are longer.
    static constexpr Begin s_begin[] = {
        PanelSteps<L>::begin,     ShortSteps<L, 1>::begin,  ShortSteps<L, 2>::begin,  SingleSteps<L, 3>::begin,
        SingleSteps<L, 4>::begin, SingleSteps<L, 5>::begin, SingleSteps<L, 6>::begin, SingleSteps<L, 7>::begin,
        SingleSteps<L, 8>::begin, LongSteps<L>::begin,
    };
    static constexpr Step s_step[] = {
        PanelSteps<L>::step,     ShortSteps<L, 1>::step,  ShortSteps<L, 2>::step,  SingleSteps<L, 3>::step,
        SingleSteps<L, 4>::step, SingleSteps<L, 5>::step, SingleSteps<L, 6>::step, SingleSteps<L, 7>::step,
        SingleSteps<L, 8>::step, LongSteps<L>::step,
    };

    static std::int64_t kind(const Elimination& e) noexcept
    {
        const std::int64_t lines = e.padded / 8;
        return e.panels ? 0 : lines < 9 ? lines : 9;
    }

    static Pivot begin(Elimination& e) noexcept { return s_begin[kind(e)](e); }
    static Pivot step(Elimination& e, const Pivot& pivot) noexcept { return s_step[kind(e)](e, pivot); }
    static void close_panel(Elimination& e) noexcept
    {
        if (e.panels)
            PanelSteps<L>::close(e);
    }
};

template <class L>
constexpr EliminationKernels elimination_kernels_of()
{
    using S = EliminationSteps<L>;
    return {S::begin, S::step, S::close_panel};
}

} // namespace qmml::matrix
