#pragma once

#include "host/mix/MixReport.hpp"
#include "host/mix/Timeline.hpp"

#include <optional>
#include <string>
#include <vector>

namespace audlmd::command {

/// Something that a reviewer of a mix must know.
struct Problem {
    /// In a word or two: "silent", "clipped", "note".
    std::string kind;
    /// Whether the output is worse for it. A note may tell of what was meant so.
    bool isFault = true;
    /// The track and the clip, or the channel.
    std::string where;
    std::string text;
    /// Empty where it has no one place.
    std::vector<TimelineSpan> places = {};
    std::optional<StripKey> strip = std::nullopt;
};

/// What the report of a mix tells, all of it, in order of time. `clips`: whether the output's format clips.
/// The texts are words::printable().
std::vector<Problem> problemsOf(const Timeline& timeline, const MixReport& report, bool clips);

} // namespace audlmd::command
