#pragma once

#include "loop_modes/RegistrationOrder.hpp"
#include "loop_modes/RenderFunction.hpp"
#include "loop_modes/SourceIteratorMaker.hpp"

#include <cstddef>
#include <utility>

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
        // Stays in a register. The caller's own position would be read in memory for each sample, because a
        // sample may lie where it does.
        Out position = out;
        for (; count != 0; --count) {
            deliver(*chain, position);
            // For every sample and before the step: a host operation may look at it during the call.
            out = position;
            ++chain;
        }
    }
}

/// All render functions and makers of the modes with one envelope stage: the work of one compile unit. An
/// even code and its twin are always in one group.
///
/// An explicit instantiation of the group emits the functions, although nothing here calls them.
template <unsigned int EnvelopeStage>
class RenderFunctionGroup {
    static constexpr std::size_t size = validModeCount / envelopeStages.size();

    static constexpr std::array<int, size> codes = [] {
        std::array<int, size> members{};
        std::size_t next = 0;
        for (unsigned long code : registrationOrder)
            if (decodeModeCode(code).envelopeStage == EnvelopeStage)
                members[next++] = static_cast<int>(code);
        return members;
    }();

    template <int N, std::size_t... OutputType>
    static void emitMode(std::index_sequence<OutputType...>) {
        static_cast<void>(&SourceIteratorMaker<N>::makeIterator);
        (static_cast<void>(&TypedFunctor<std::tuple_element_t<OutputType, OutputTypes>>::template Functor<
                           Loki::Int2Type<N>>::ProcessSamples),
         ...);
    }

    template <std::size_t... Member>
    static void emitAll(std::index_sequence<Member...>) {
        (emitMode<codes[Member]>(std::make_index_sequence<outputTypeCount>()), ...);
    }

public:
    static void emit() { emitAll(std::make_index_sequence<size>()); }
};

} // namespace Aud::Render::LoopModesDespatch
