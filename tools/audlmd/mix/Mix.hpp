#pragma once

#include "host/mix/Timeline.hpp"
#include "tools/audlmd/mix/MixOptions.hpp"

#include <filesystem>
#include <functional>
#include <optional>

namespace audlmd::command {

/// Runs one mix, from the options to the last line of the report: reads the timeline that the options name,
/// or takes `timeline`. Throws CommandError, and what reading a timeline throws. `looksAt` is as in
/// MediaFinder.
void runMix(const MixOptions& options, std::optional<Timeline> timeline = std::nullopt,
            const std::function<void(const std::filesystem::path&)>& looksAt = {});

} // namespace audlmd::command
