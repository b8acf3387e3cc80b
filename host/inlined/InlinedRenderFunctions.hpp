#pragma once

#include "host/signal/Unclipped.hpp"
#include "loop_modes/RenderFunction.hpp"

namespace Aud::Render::LoopModesDespatch {

/// The render functions of unclipped output. Makers and chains are the library's; the loop over the samples
/// is not, see host/inlined/InlinedUnit.hpp.
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

namespace audlmd {

/// The render function of a mode that was compiled into this program together with the host operations that a
/// sample needs. Null for a code that names no mode, and for a mode that was left out of the build. Any
/// number may be asked for, at any time, on any thread.
///
/// The function renders the bytes that the function of a despatch table renders, before the output type clips
/// and encodes them. The cache of the record must be a MaterialCache. Twins have one function in common.
UnclippedRenderFunction inlinedRenderFunction(unsigned long code) noexcept;

} // namespace audlmd
