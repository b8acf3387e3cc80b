#pragma once

#include "host/mix/Media.hpp"
#include "host/mix/Timeline.hpp"
#include "host/play/MixedTimeline.hpp"
#include "host/timeline/TimelineFiles.hpp"

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>

namespace audlmd::c {

/// Whatever can be heard. Copies share what they play.
struct Sound {
    /// How it is read; at least one channel.
    Media media;
    /// Of a mix.
    std::shared_ptr<MixedTimeline> mix = nullptr;
    /// Of a mix: opens what its strips name.
    OpenMedia open = nullptr;
};

/// How a mix works.
struct MixOptions {
    std::size_t threads = 0;
    /// What the mix is folded down to.
    std::optional<ChannelLayout> channels = std::nullopt;
};

/// Throws what Mixer throws.
Sound mixed(Timeline timeline, OpenMedia open, const MixOptions& options);

/// What a timeline must know of a sound that it plays.
timeline::MediaFacts factsOf(const Sound& sound);

} // namespace audlmd::c

/// The type that C knows, by this name alone.
struct audlmd_sound {
    audlmd::c::Sound sound;
};
