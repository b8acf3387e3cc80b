#pragma once

#include "host/mix/Timeline.hpp"
#include "tools/audlmd/mix/MixOptions.hpp"

#include <optional>

namespace audlmd::command {

/// Runs one mix, from the options to the last line of the report: reads the timeline that the options name,
/// or takes `timeline`. Throws CommandError, and what reading a timeline throws.
void runMix(const MixOptions& options, std::optional<Timeline> timeline = std::nullopt);

} // namespace audlmd::command
