#pragma once

#include "host/signal/Unclipped.hpp"
#include "loop_modes/RenderFunction.hpp"

namespace Aud::Render::LoopModesDespatch {

/// The render functions of unclipped output. Makers and chains are the library's; the loop over the samples
/// is not, see host/inlined/UnclippedLoop.hpp.
template <>
struct TypedFunctor<audlmd::Unclipped> {
    template <class ModeCode>
    struct Functor;

    template <int N>
    struct Functor<Loki::Int2Type<N>> {
        static void ProcessSamples(IteratorCreationParams& params, audlmd::Unclipped& out,
                                   unsigned int count);
    };
};

} // namespace Aud::Render::LoopModesDespatch
