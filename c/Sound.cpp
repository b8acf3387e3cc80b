#include "c/Sound.hpp"

#include "host/inlined/InlinedRenderFunctions.hpp"
#include "host/mix/Mixer.hpp"

#include <utility>

namespace audlmd::c {

Sound mixed(Timeline timeline, OpenMedia open, const MixOptions& options) {
    if (options.channels)
        timeline.foldDown = FoldDown{.routing = defaultRouting(layoutOf(timeline), *options.channels),
                                     .layout = *options.channels};
    const int sampleRate = timeline.sampleRate;
    const ChannelLayout layout = outputLayout(timeline);
    Sound sound{.media = {.channels = {}, .sampleRate = sampleRate, .layout = layout},
                .mix = std::make_shared<MixedTimeline>(
                    std::move(timeline), open,
                    MixerOptions{.threads = options.threads, .inlined = &inlinedRenderFunction}),
                .open = std::move(open)};
    sound.media.channels = MixedTimeline::sources(sound.mix);
    return sound;
}

timeline::MediaFacts factsOf(const Sound& sound) {
    return {.length = sound.media.channels.front()->length(), .sampleRate = sound.media.sampleRate};
}

} // namespace audlmd::c
