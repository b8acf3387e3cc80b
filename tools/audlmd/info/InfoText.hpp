#pragma once

#include "tools/audlmd/info/FileInfo.hpp"

#include <string>

namespace audlmd::command {

/// What is known of a file, in lines for a terminal. `name` is that of the input.
std::string infoText(const std::string& name, const FileInfo& info);

/// The same as one line of JSON. Levels are in decibels, loudness is in LUFS; null is silence, minus
/// infinity. What is not measured is not there.
std::string infoJson(const std::string& name, const FileInfo& info);

/// The line of an input that cannot be read.
std::string failureJson(const std::string& name, const std::string& failure);

} // namespace audlmd::command
