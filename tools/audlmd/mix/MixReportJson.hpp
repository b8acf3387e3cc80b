#pragma once

#include "tools/audlmd/mix/MixReportText.hpp"

#include <nlohmann/json_fwd.hpp>

#include <string>
#include <vector>

namespace audlmd::command {

/// The whole report. Times are output samples of the timeline, levels are decibels over full scale.
nlohmann::json reportJson(const MixReport& report, const Timeline& timeline, const MixRun& run);

/// The loudest sample of each channel, and those over full scale.
nlohmann::json channelsJson(const std::vector<Overload>& channels, bool clips);

/// The sound files that were written, and their formats.
nlohmann::json outputsJson(const std::vector<WrittenSound>& outputs);

/// What a file, or a line, holds of a report. Names come from files, and may be no UTF-8: what is none is
/// replaced.
std::string jsonText(const nlohmann::json& report);

/// A name of what slices are parts of. Changes with anything that changes a sample, but for the content of
/// the media.
std::string wholeName(const Timeline& timeline, TimelineSpan span, FormatId format, Rounding rounding);

} // namespace audlmd::command
