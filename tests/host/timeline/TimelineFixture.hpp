#pragma once

#include "host/timeline/JsonReader.hpp"
#include "host/timeline/OtioReader.hpp"
#include "host/timeline/TimelineError.hpp"
#include "host/timeline/TimelineFiles.hpp"

#include <string>
#include <vector>

namespace audlmd::test {

using namespace timeline;

// Authors OpenTimelineIO. Times are frames at 25 per second unless said otherwise.

inline constexpr std::int64_t frame = 1920;

Json time(double value, double rate = 25);
Json range(double start, double duration, double rate = 25);
/// A clip of /a.wav, a file of 1,000 frames from timecode 0. `more` replaces and adds members.
Json clip(const std::string& name, double start, double duration, const Json& more = Json::object());
Json gap(double duration);
Json transition(double in, double out, const std::string& curve = {});
Json warp(double scalar);
Json composition(const std::string& schema, const std::vector<Json>& children,
                 const Json& more = Json::object());
Json track(const std::vector<Json>& children, const Json& more = Json::object());
Json timeline(const std::vector<Json>& tracks, const Json& more = Json::object());

/// For 48,000 Hz and two channels.
ReadOptions options();
/// The strips of one track of these children.
std::vector<TimelineStrip> stripsOf(const std::vector<Json>& children,
                                    const Json& moreOfTrack = Json::object());
/// The line that the reader refuses a text with. Empty: the text was read.
std::string refusal(const std::string& text, const ReadOptions& how = options());

} // namespace audlmd::test
