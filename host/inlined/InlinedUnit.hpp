#pragma once

#include "host/inlined/HostOperations.hpp"
#include "host/inlined/ModeSelection.hpp"
#include "host/inlined/UnclippedLoop.hpp"
#include "host/signal/Unclipped.hpp"
#include "loop_modes/RegistrationOrder.hpp"

#include <algorithm>
#include <array>
#include <cstddef>
#include <utility>

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
