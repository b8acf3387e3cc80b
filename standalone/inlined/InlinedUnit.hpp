#pragma once

#include "loop_modes/RegistrationOrder.hpp"
#include "loop_modes/RenderFunctionGroup.hpp"
#include "standalone/inlined/HostOperations.hpp"
#include "standalone/inlined/ModeSelection.hpp"
#include "standalone/signal/Unclipped.hpp"

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

    template <unsigned long Code>
    static void emitMode() {
        if constexpr (isMember(Code))
            static_cast<void>(&Aud::Render::LoopModesDespatch::TypedFunctor<Unclipped>::Functor<
                              Loki::Int2Type<static_cast<int>(Code)>>::ProcessSamples);
    }

    template <std::size_t... Place>
    static void emitAll(std::index_sequence<Place...>) {
        (emitMode<Aud::Render::registrationOrder[Place]>(), ...);
    }

public:
    static void emit() { emitAll(std::make_index_sequence<Aud::Render::validModeCount>()); }
};

} // namespace audlmd
