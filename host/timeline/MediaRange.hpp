#pragma once

#include "host/mix/Timeline.hpp"
#include "host/signal/StripPlan.hpp"
#include "host/timeline/ReadOptions.hpp"
#include "host/timeline/TimelineError.hpp"

#include <cstdint>
#include <map>
#include <optional>
#include <string>

namespace audlmd::timeline {

/// What is known of a timeline's media. Asks about each of them once.
class MediaAnswers {
public:
    explicit MediaAnswers(const ReadOptions& options) : options_(options) {}

    struct Answer {
        std::optional<MediaFacts> facts;
        /// Where there are no facts: why.
        std::string problem;
    };
    /// Valid as long as this object.
    const Answer& of(const std::string& media);

private:
    const ReadOptions& options_;
    std::map<std::string, Answer> answers_;
};

/// The length of a file at the timeline's sample rate, rounded. At most farthestPosition.
std::int64_t lengthAt(int sampleRate, const MediaFacts& facts);

/// What a strip plays of its material, without the part that is skipped. In samples at the timeline's rate.
MaterialSpan heardOf(const TimelineStrip& strip);

/// For messages, with milliseconds.
std::string inSeconds(std::int64_t samples, int sampleRate);

/// Notes a strip that plays beyond an end of its material, where there is silence. `length` is the
/// material's, if that is known. Up to `rounding` samples are no failure, because times in frames are often
/// longer than the file by a part of a frame. `emptyStart`: silence before the start is what the file asks
/// for.
void noteSilentEnds(const TimelineStrip& strip, std::optional<std::int64_t> length, std::int64_t rounding,
                    bool emptyStart, const Where& where, Timeline& timeline);

/// Notes an automation that has points before or after the strip's range.
void noteOutsideAutomation(const TimelineStrip& strip, const Where& where, Timeline& timeline);

} // namespace audlmd::timeline
