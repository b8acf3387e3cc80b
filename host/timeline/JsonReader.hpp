#pragma once

#include "host/mix/Timeline.hpp"
#include "host/timeline/Json.hpp"
#include "host/timeline/TimelineFiles.hpp"

namespace audlmd::timeline {

/// Reads our own JSON, see docs/timeline.schema.json. Throws TimelineError, which names track, strip and key.
Timeline readJson(const Json& root, const ReadOptions& options);

} // namespace audlmd::timeline
