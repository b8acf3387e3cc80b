#pragma once

#include "contract/DespatchTables.hpp"

/// The version of this library: four numbers, separated by dots.
/// \snippet modes.cpp version
const char* audLMDDllVersionStr();

namespace Aud::Render {

struct IteratorCreationParams;

namespace LoopModesDespatch {

/// The render functions of one output type.
template <class Out>
struct TypedFunctor {
    template <class ModeCode>
    struct Functor;

    /// The render function of one mode. Defined in loop_modes/RenderFunctionGroup.hpp, which only the units
    /// that instantiate it include, so that naming a render function does not compile it again.
    template <int N>
    struct Functor<Loki::Int2Type<N>> {
        /// Renders `count` samples. `out` moves past each sample as it is written, so that host operations
        /// during the call find it there, and stands just past the last one in the end. Throws what the chain
        /// throws; `out` then stands past the samples that were written.
        /// \snippet modes.cpp call
        static void ProcessSamples(IteratorCreationParams& params, Out& out, unsigned int count);
    };
};

} // namespace LoopModesDespatch
} // namespace Aud::Render
