#pragma once

#include "loop_modes/RenderFunction.hpp"
#include "loop_modes/SourceIteratorMaker.hpp"

namespace Aud::Render::LoopModesDespatch {

/// The same object, which the compiler then reaches through a register of its own. The loops are bound by the
/// bytes of their code, and each access by way of the stack pointer takes one byte more.
template <class T>
[[gnu::always_inline]] inline T& throughRegister(T& object) {
    T* address = &object;
    asm("" : "+r"(address));
    return *address;
}

template <class Out>
template <int N>
[[gnu::used, gnu::noinline]] void
TypedFunctor<Out>::Functor<Loki::Int2Type<N>>::ProcessSamples(IteratorCreationParams& params, Out& out,
                                                              unsigned int count) {
    if constexpr (isTwinOfEvenCode(N)) {
        // A function of its own, with an address of its own, that only jumps.
        Functor<Loki::Int2Type<N - 1>>::ProcessSamples(params, out, count);
    } else {
        Chain<N> made = SourceIteratorMaker<N>::makeIterator(params);
        Chain<N>& chain = throughRegister(made);
        for (; count != 0; --count) {
            deliver(*chain, out);
            ++chain;
        }
    }
}

} // namespace Aud::Render::LoopModesDespatch
