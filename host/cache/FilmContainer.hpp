#pragma once

#include <filesystem>
#include <string>

namespace audlmd {

/// Whether a file begins like one of the containers that hold pictures beside sound. False for a file that
/// cannot be read.
bool isFilmContainer(const std::filesystem::path& path);

/// What to do about a film container: names the ffmpeg command that extracts its sound into a file beside it.
/// The command can be pasted into a shell as it stands, whatever the name holds: it has printing characters
/// only.
std::string filmContainerAdvice(const std::filesystem::path& path);

} // namespace audlmd
