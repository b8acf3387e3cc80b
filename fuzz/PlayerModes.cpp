// In place of the library, which takes too long to build for a sanitizer: render functions of one output type
// for players, with and without each stage.

#include "loop_modes/RegistrationOrder.hpp"
#include "loop_modes/RenderFunctionGroup.hpp"
#include "ole/Orv/OrvModeMeta"

#include <algorithm>
#include <array>
#include <cstddef>
#include <utility>

namespace {

using namespace Aud::Render;

/// Both directions, equaliser, fades at both ends or at the start, fixed gain, automation forwards, and all
/// conversions.
constexpr bool isTaken(unsigned long code) {
    const ModeFields fields = decodeModeCode(code);
    const EnvelopeStage stage = envelopeStages[fields.envelopeStage];
    const bool hasEnvelope = stage.envelope == EnvelopeKind::none ||
                             stage.envelope == EnvelopeKind::rampHold ||
                             stage.envelope == EnvelopeKind::rampHoldRamp;
    const bool hasLevel = fields.levelStage == LevelStage::none ||
                          (fields.levelStage == LevelStage::dynamic &&
                           fields.dynamicLevelDirection == DynamicLevelDirection::forwards);
    return hasEnvelope && hasLevel && !isTwinOfEvenCode(code);
}

constexpr std::size_t count =
    static_cast<std::size_t>(std::count_if(registrationOrder.begin(), registrationOrder.end(), isTaken));

constexpr std::array<int, count> codes = [] {
    std::array<int, count> taken{};
    std::size_t next = 0;
    for (const unsigned long code : registrationOrder)
        if (isTaken(code))
            taken[next++] = static_cast<int>(code);
    return taken;
}();

template <std::size_t... Place>
bool registerModes(std::index_sequence<Place...>) {
    using Out = Aud::SampleF32*;
    auto& table = Aud::LoopModesDespatcherInstance<Out>::get();
    (table.registerFunction(codes[Place], &LoopModesDespatch::TypedFunctor<Out>::template Functor<
                                              Loki::Int2Type<codes[Place]>>::ProcessSamples),
     ...);
    return true;
}

[[maybe_unused]] const bool registered = registerModes(std::make_index_sequence<count>());

} // namespace
