#pragma once

#include "host/inlined/HostOperations.hpp"
#include "host/inlined/InlinedRenderFunctions.hpp"
#include "host/inlined/ModeSelection.hpp"
#include "host/inlined/SpanLoop.hpp"
#include "loop_modes/RegistrationOrder.hpp"
#include "loop_modes/SourceIteratorMaker.hpp"

#include <algorithm>
#include <array>
#include <cstddef>
#include <utility>

namespace Aud::Render::LoopModesDespatch {

/// Chains without a converter render whole ready spans. All other samples go one by one.
template <int N>
[[gnu::used, gnu::noinline]] void TypedFunctor<audlmd::Unclipped>::Functor<Loki::Int2Type<N>>::ProcessSamples(
    IteratorCreationParams& params, audlmd::Unclipped& out, unsigned int count) {
    Chain<N> made = SourceIteratorMaker<N>::makeIterator(params);
    Chain<N>& chain = *Instructions::inRegister(&made);
    for (; count != 0; --count) {
        if constexpr (audlmd::isRenderedBySpan<Chain<N>>) {
            const std::size_t rendered = audlmd::renderSpan(chain, {out.position, count});
            out.position += rendered;
            count -= static_cast<unsigned int>(rendered);
            if (count == 0)
                return;
        }
        deliver(*chain, out);
        ++chain;
    }
}

} // namespace Aud::Render::LoopModesDespatch

namespace audlmd {

/// The render functions of the selected modes with one kind of envelope and one conversion: the work of one
/// compile unit. An explicit instantiation emits the functions, although nothing here calls them.
template <const ModeSelection& Selection, Aud::Render::EnvelopeKind Envelope,
          Aud::Render::ConversionStage Conversion>
class InlinedUnit {
    static constexpr bool isMember(unsigned long code) {
        const Aud::Render::ModeFields fields = Aud::Render::decodeModeCode(code);
        return Selection.has(code) && fields.srcStage == Conversion &&
               Aud::Render::envelopeStages[fields.envelopeStage].envelope == Envelope &&
               !Aud::Render::isTwinOfEvenCode(code);
    }

    static constexpr std::size_t size = static_cast<std::size_t>(std::count_if(
        Aud::Render::registrationOrder.begin(), Aud::Render::registrationOrder.end(), isMember));

    static constexpr std::array<int, size> codes = [] {
        std::array<int, size> members{};
        std::size_t next = 0;
        for (const unsigned long code : Aud::Render::registrationOrder)
            if (isMember(code))
                members[next++] = static_cast<int>(code);
        return members;
    }();

    template <std::size_t... Member>
    static void emitAll(std::index_sequence<Member...>) {
        (static_cast<void>(&Aud::Render::LoopModesDespatch::TypedFunctor<Unclipped>::Functor<
                           Loki::Int2Type<codes[Member]>>::ProcessSamples),
         ...);
    }

public:
    static void emit() { emitAll(std::make_index_sequence<size>()); }
};

} // namespace audlmd
