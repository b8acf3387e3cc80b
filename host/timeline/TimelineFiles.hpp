#pragma once

#include "host/mix/Timeline.hpp"
#include "host/timeline/Json.hpp"
#include "host/timeline/ReadOptions.hpp"
#include "host/timeline/TimelineError.hpp"

#include <cstddef>
#include <cstdint>
#include <functional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace audlmd::timeline {

/// Reads OpenTimelineIO or our own JSON: an object with an OTIO_SCHEMA, or with the key "audlmd". Throws
/// TimelineError, one line for the user. The timeline needs no files to be there, except where it does not
/// say how long a medium is.
Timeline readTimeline(std::string_view text, const ReadOptions& options);

/// Reads OpenTimelineIO, see docs/timelines.md for what becomes of each part. What is not played as written
/// becomes a note. Throws TimelineError, which names track and clip.
Timeline readOtio(const Json& root, const ReadOptions& options);

/// Reads our own JSON, see docs/timeline.schema.json. Throws TimelineError, which names track, strip and key.
Timeline readJson(const Json& root, const ReadOptions& options);

/// Our own JSON, all times in samples. readJson() makes the same timeline of it. What the mixer sets (cookie,
/// levels, waiting) is left out. Use this to convert a timeline, or to see what became of one.
Json writeJson(const Timeline& timeline);

/// What to show for a medium: the path that was found, say.
using FileText = std::function<std::string(const std::string& media)>;

/// What sounds when, as text for a terminal: a line about the whole, a table of strips, then markers, then
/// notes. Names are shortened as by printable(). Trap: made for people, the columns may change.
std::string list(const Timeline& timeline, const FileText& fileOf);

/// Notes as lines for a terminal, in their order. Equal ones are one line with their number.
std::vector<std::string> noteLines(std::span<const TimelineNote> notes, int sampleRate);

/// The place of a strip, for messages. Tracks and strips are counted from 0; those without a name are shown
/// as #1, #2 and so on.
Where whereIs(const Timeline& timeline, std::size_t track, std::size_t strip);

/// A time for people: h:mm:ss.mmm.
std::string clock(std::int64_t samples, int sampleRate);

} // namespace audlmd::timeline
