#pragma once

#include "host/mix/Timeline.hpp"
#include "host/timeline/ReadOptions.hpp"

#include <string>
#include <string_view>

namespace audlmd::timeline {

/// Reads OpenTimelineIO or our own JSON: an object with an OTIO_SCHEMA, or with the key "audlmd". The content
/// decides, because the extension of a file says nothing certain. What is not played as it is written becomes
/// a note, see docs/timelines.md. Throws TimelineError, one line for the user. The timeline needs no files to
/// be there, except where it does not say how long a medium is.
Timeline readTimeline(std::string_view text, const ReadOptions& options);

/// Our own JSON, all times in samples, see docs/timeline.schema.json. readTimeline() makes the same timeline
/// of it. What the mixer sets (cookie, levels, waiting) is left out. Bytes of names that are no UTF-8 become
/// U+FFFD. Use this to convert a timeline, or to see what became of one.
std::string writeJson(const Timeline& timeline);

} // namespace audlmd::timeline
