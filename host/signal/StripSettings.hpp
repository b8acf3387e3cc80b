#pragma once

#include "contract/Identity.hpp"
#include "contract/SampleCache.hpp"
#include "host/signal/Automation.hpp"
#include "host/signal/Clocks.hpp"
#include "host/signal/Equaliser.hpp"
#include "host/signal/Fade.hpp"
#include "loop_modes/ModeCode.hpp"

#include <cstdint>
#include <optional>
#include <vector>

namespace audlmd {

/// How a strip changes speed. Use `best` for what is kept, at one speed throughout: the material itself is
/// converted, free of aliases, see atNormalSpeed(). Use `linear` (straight lines between neighbouring
/// samples) for any speed and little CPU time, and `filtering` (band-limited, some 60 dB) at speeds up to the
/// configured limit.
enum class Converter { none, linear, filtering, best };

/// An automation and the direction of its walk. Positions of the nodes are source samples, counted from the
/// start of the range. Walked in reverse, the first sample delivered has the level of the range's last
/// position.
struct AutomationWalk {
    Automation automation;
    DynamicLevelDirection direction = DynamicLevelDirection::forwards;
};

/// What a StripPlayer plays, and how. The defaults change nothing of the sound.
/// \snippet signal.cpp player
struct StripSettings {
    /// Names the material in the sample cache.
    Cookie cookie;
    /// The range; sample `to` is excluded. A range may reach beyond the material, and is silent there.
    MaterialSample from;
    MaterialSample to;
    /// Plays from the last sample of the range to the first.
    bool reverse = false;

    /// Up to five bands in series, in this order. An empty list leaves the equaliser out of the chain.
    std::vector<EqualiserBand> equaliser;
    /// Of the material, in hertz. Only the equaliser needs the sample rate.
    double sampleRate = 48000.0;
    /// In source samples: multiply lengths as heard by the speed.
    FadePlan fade;
    /// U-values of the mixer-style curve, see mixerStyleUValueOfDecibels(). Not set: the stage is left out of
    /// the chain.
    std::optional<float> middleLevel;
    std::optional<float> outerLevel;
    /// Takes the place of the outer level in the chain: set one of the two at most.
    std::optional<AutomationWalk> automation;

    Converter converter = Converter::none;
    /// In source samples per output sample, from slowestSpeed to fastestSpeed; with the filtering converter,
    /// as isFilteringSpeed() says, and with `best` as whyNotBest() says. Without a converter the speed is 1.
    double speed = 1.0;

    /// Waits for samples that are not loaded yet. Without waiting such samples are silent, and counted as
    /// underruns. Set this for files; clear this where a late sample is worse than a missing one.
    bool wait = true;
    /// Handed to the cache's forward reader, see MaterialCache.
    std::uint32_t forwardArgument = 0;
    /// Tells the cache how far ahead to load. Not set: the speed in force.
    std::optional<Orv::OutputGearing> gearing;
};

} // namespace audlmd
