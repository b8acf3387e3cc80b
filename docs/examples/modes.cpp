#include "sounds.hpp"
#include <host/cache/MaterialCache.hpp>
#include <host/services/Identities.hpp>
#include <host/services/RenderFunctions.hpp>
#include <loop_modes/IteratorCreationParams.hpp>
#include <loop_modes/ModeCode.hpp>
#include <loop_modes/RegistrationOrder.hpp>
#include <loop_modes/RenderFunction.hpp>
#include <ole/Aud/SpeedLimit.hpp>

#undef NDEBUG
#include <array>
#include <cassert>
#include <cstdio>

using namespace Aud::Render;

static unsigned long name() {
    //! [code]
    const unsigned long code = encodeModeCode({.direction = Direction::forward,
                                               .levelStage = LevelStage::fixed,
                                               .filterStage = FilterStage::none,
                                               .srcStage = ConversionStage::linear,
                                               .envelopeStage = 0,
                                               .dynamicLevelDirection = DynamicLevelDirection::reverse});
    assert(isValidModeCode(code) && decodeModeCode(code).srcStage == ConversionStage::linear);
    assert(isTwinOfEvenCode(code + 1) &&
           !isValidModeCode(modeCodeLimit)); // without automation, the odd code is the same chain
    //! [code]

    //! [order]
    static_assert(registrationOrder.size() == 864 && outputTypeCount == 14);
    static_assert(std::is_same_v<std::tuple_element_t<1, OutputTypes>, Aud::SampleS16*>);
    //! [order]
    return code;
}

int main() {
    //! [version]
    std::printf("libaudlmd.so %s, filtering up to %g times\n", audLMDDllVersionStr(), cfgAudioPlaybackSpeedLimit);
    //! [version]
    const unsigned long code = name();

    //! [call]
    audlmd::MaterialCache cache;
    const Cookie cookie{.material = audlmd::makeUuid()};
    cache.add(cookie, std::make_shared<audlmd::MemorySource>(tone(48000)));

    // What the host keeps of one source from call to call.
    PerSourceRecord record;
    record.strip = ce_handle(cookie);
    record.outerLevelUValue = 1.0F;

    // One request: what the mode does not read stays unset.
    const std::int64_t start = 12000;
    const bool wait = true;
    const std::uint32_t held = 0;
    const Aud::SubSamplePos offset(0, 0), step(2, 0); // twice the speed
    const Orv::OutputGearing gearing{.sourceSamplesPerOutputSample = 2.0};
    IteratorCreationParams request{.source = &record,
                                   .startPosition = &start,
                                   .requestFlag = &wait,
                                   .forwardArgument = &held,
                                   .subSampleStart = &offset,
                                   .subSampleStep = &step,
                                   .gearing = &gearing,
                                   .cache = &cache};

    std::array<Aud::SampleS16, 480> words{};
    Aud::SampleS16* out = words.data();
    audlmd::renderFunction<Aud::SampleS16*>(code)(request, out, words.size());
    assert(out == words.data() + words.size());
    //! [call]
}
