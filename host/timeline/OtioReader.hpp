#pragma once

#include "host/mix/Timeline.hpp"
#include "host/timeline/Json.hpp"
#include "host/timeline/TimelineFiles.hpp"

namespace audlmd::timeline {

/// Reads OpenTimelineIO, see docs/timelines.md for what becomes of each part. What is not played as written
/// becomes a note. Throws TimelineError, which names track and clip.
Timeline readOtio(const Json& root, const ReadOptions& options);

} // namespace audlmd::timeline
