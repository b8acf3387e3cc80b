#pragma once

#include "host/mix/MixReport.hpp"
#include "host/mix/Timeline.hpp"

#include <cstddef>
#include <string>

namespace audlmd::command {

/// What was mixed, and how long that took.
struct MixRun {
    TimelineSpan span;
    /// Of wall-clock time.
    double seconds = 0.0;
    /// The files, as the user has named them.
    std::string timeline;
    std::string output;
    /// Whether the text tells only what is not as it was asked.
    bool quiet = false;
    /// Whether the output clips what is beyond full scale.
    bool clips = true;
};

/// The report for a terminal, the timeline's notes included: lines, of which each kind of problem takes a
/// dozen at most.
std::string reportText(const MixReport& report, const Timeline& timeline, const MixRun& run);

/// The whole report as JSON. Times are output samples of the timeline, levels are decibels over full scale.
std::string reportJson(const MixReport& report, const Timeline& timeline, const MixRun& run);

/// What a report says of samples beyond full scale, by whether they were clipped.
constexpr const char* overloadWords(bool clips) {
    return clips ? "clipped" : "over full scale, not clipped";
}

/// The line of a report on what is beyond full scale in one channel of an output, counted from 0. Empty where
/// there is nothing to tell. `what` is the kind of line.
std::string channelOverloadLine(const char* what, std::size_t channel, const Overload& overload,
                                int sampleRate);

} // namespace audlmd::command
