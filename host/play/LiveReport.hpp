#pragma once

#include "host/mix/MixReport.hpp"

#include <cstdint>
#include <string>
#include <vector>

namespace audlmd {

/// What was late or failed in a sound, in all its channels together.
struct SoundReport {
    /// The first error of the material, or what ended the rendering. Empty: no error.
    std::string failure;
    /// Samples that were not loaded in time, and how often that began. They are rendered as silence; some of
    /// that may have been dropped before it was heard. See MaterialStatistics.
    std::uint64_t lateSamples = 0;
    std::uint64_t lateEpisodes = 0;
    /// Where. Neighbouring spans are joined where there are many.
    std::vector<RangeSpan> late;
};

/// What a LivePlayer could not play in time so far.
struct LiveUnderruns {
    /// Samples of all channels that were not loaded in time, and how often that began. See
    /// MaterialStatistics.
    std::uint64_t lateSamples = 0;
    std::uint64_t lateEpisodes = 0;
    /// Frames that were not rendered in time, and how often that began.
    std::uint64_t starvedFrames = 0;
    std::uint64_t starvedEpisodes = 0;
};

/// What was late or failed so far in what a LivePlayer plays.
/// \snippet play.cpp report
struct LiveReport {
    SoundReport sound;
    /// Of a timeline: the strips that failed or were late, see MixReport. A strip may be there twice: as the
    /// cache has played it, and as a mixer has.
    std::vector<StripReport> strips;
};

} // namespace audlmd
