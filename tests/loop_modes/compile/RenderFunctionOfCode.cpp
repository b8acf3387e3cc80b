// Compiles where AUDLMD_CODE is a valid mode code, and must not where it is none.

#include "loop_modes/RenderFunctionGroup.hpp"

auto* const function = &Aud::Render::LoopModesDespatch::TypedFunctor<Aud::SampleF32*>::Functor<
    Loki::Int2Type<AUDLMD_CODE>>::ProcessSamples;
