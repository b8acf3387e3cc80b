#pragma once

#include "host/timeline/Reading.hpp"

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace audlmd::timeline {

// What both kinds of file have in common: what a strip can be, and what of it is not heard as written.

/// The gain of a strip has this upper limit, in decibels.
inline constexpr double highestGainDb = 60.0;

/// Takes another converter where the strip's cannot play it: filtering in place of best, linear in place of
/// filtering. Returns the note on that; empty where the converter stays. Speed, sample rate and equaliser
/// must be known.
std::string settleConverter(StripSettings& settings);

/// Throws for bands that the equaliser cannot have at the output's sample rate. Call this before a strip is
/// handed to a player, so that the message names the clip.
void requireBands(const std::vector<EqualiserBand>& bands, const Reading& reading);

/// What a strip plays of its media, without the part that is skipped. In samples at the timeline's rate.
MaterialSpan heardOf(const TimelineStrip& strip);

/// For messages, with milliseconds.
std::string inSeconds(std::int64_t samples, int sampleRate);

/// Notes a strip that plays beyond an end of its media, where there is silence. `length` is the
/// media's, if that is known. Up to `rounding` samples are no failure, because times in frames are often
/// longer than the file by a part of a frame. `emptyStart`: silence before the start is what the file asks
/// for.
void noteSilentEnds(const TimelineStrip& strip, std::optional<std::int64_t> length, std::int64_t rounding,
                    bool emptyStart, const Reading& reading);

/// Notes an automation that has points before or after the strip's range.
void noteOutsideAutomation(const TimelineStrip& strip, const Reading& reading);

} // namespace audlmd::timeline
