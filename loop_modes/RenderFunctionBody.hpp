#pragma once

#include "loop_modes/RenderFunction.hpp"
#include "loop_modes/SourceIteratorMaker.hpp"

namespace Aud::Render::LoopModesDespatch {

template <class Out>
template <int N>
[[gnu::used, gnu::noinline]] void
TypedFunctor<Out>::Functor<Loki::Int2Type<N>>::ProcessSamples(IteratorCreationParams& params, Out& out,
                                                              unsigned int count) {
    if constexpr (isTwinOfEvenCode(N)) {
        // A jump, in a function with an address of its own.
        Functor<Loki::Int2Type<N - 1>>::ProcessSamples(params, out, count);
    } else {
        Chain<N> made = SourceIteratorMaker<N>::makeIterator(params);
        Chain<N>& chain = *Instructions::inRegister(&made);
        for (; count != 0; --count) {
            deliver(*chain, out);
            ++chain;
        }
    }
}

} // namespace Aud::Render::LoopModesDespatch
