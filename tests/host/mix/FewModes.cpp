// In place of the library, which takes too long to build for a sanitizer: the render functions of the strips
// that the tests of the mixer and of live playback play.

#include "loop_modes/RenderFunctionGroup.hpp"
#include "ole/Orv/OrvModeMeta"

#include <utility>

namespace {

template <int... codes>
bool registerModes(std::integer_sequence<int, codes...>) {
    using Out = Aud::SampleF32*;
    auto& table = Aud::LoopModesDespatcherInstance<Out>::get();
    (table.registerFunction(codes, &Aud::Render::LoopModesDespatch::TypedFunctor<Out>::template Functor<
                                       Loki::Int2Type<codes>>::ProcessSamples),
     ...);
    return true;
}

[[maybe_unused]] const bool registered =
    registerModes(std::integer_sequence<int, 0, 32, 64, 1024, 1026, 1040, 1056, 1088, 1152, 1154, 1283, 385,
                                        387, 397, 407, 1409, 1421>());

} // namespace
