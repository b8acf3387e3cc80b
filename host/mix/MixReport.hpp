#pragma once

#include "host/signal/Clocks.hpp"

#include <compare>
#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

namespace audlmd {

/// Samples beyond full scale: above 1.0 or below -1.0. The output clips them when it is stored.
struct Overload {
    std::uint64_t samples = 0;
    /// The magnitude of the largest sample, also where none is beyond full scale. 1.0 is full scale.
    float peak = 0.0F;
    /// The sample that was the first, in the order of rendering. 0 where `samples` is 0.
    TimelineSample firstAt;
    /// Where, to within a block of the mixer. Neighbouring spans are joined where there are many.
    std::vector<TimelineSpan> spans;
};

/// Which strip of a timeline: the numbers of the track and of the strip in it, from 0. Keys are ordered as
/// the timeline is.
struct StripKey {
    std::size_t track = 0;
    std::size_t strip = 0;

    friend auto operator<=>(const StripKey&, const StripKey&) = default;
};

/// What went wrong with one strip.
struct StripReport : StripKey {
    /// Why the strip, or a part of it, is silent: the text of the first error of its material. Empty: no
    /// error.
    std::string failure;
    /// Source samples that were rendered as silence because they were not there in time, of all channels
    /// together; and how often that began. See MaterialStatistics.
    std::uint64_t underrunSamples = 0;
    std::uint64_t underrunEpisodes = 0;
    /// Where the strip was silent though it should have sounded, as Overload::spans.
    std::vector<TimelineSpan> silent;
    /// Of the strip alone, before it is summed with others, in its loudest output channel.
    Overload overload;
};

/// The strip that took most time to render.
struct SlowestStrip : StripKey {
    /// Of the processor.
    double seconds = 0.0;
};

/// What a mixer has to tell about all that it has rendered so far. A stretch that is rendered twice counts
/// twice.
/// \snippet timeline.cpp report
struct MixReport {
    /// The strips with something to tell, in the order of the timeline.
    std::vector<StripReport> strips;
    /// One for each channel of the output.
    std::vector<Overload> channels;
    /// The same for each track by itself. Empty unless MixerOptions::stems is set.
    std::vector<std::vector<Overload>> stems;
    SlowestStrip slowest;
};

} // namespace audlmd
