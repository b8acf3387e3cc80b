#pragma once

#include "tools/audlmd/info/FileInfo.hpp"

#include <nlohmann/json_fwd.hpp>

#include <string>
#include <vector>

namespace audlmd::command {

/// What is known of a file, in lines for a terminal. `name` is that of the input.
std::vector<std::string> infoLines(const std::string& name, const FileInfo& info);

/// The same for programs. Levels are in decibels, loudness is in LUFS; null is silence, minus infinity. What
/// is not defined is not there.
nlohmann::json infoJson(const FileInfo& info);

} // namespace audlmd::command
