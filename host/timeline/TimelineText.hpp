#pragma once

#include <filesystem>
#include <string>

namespace audlmd::timeline {

/// What readTimeline() needs of a timeline's file or bundle.
struct TimelineText {
    std::string text;
    /// For ReadOptions::folder.
    std::filesystem::path folder;
};

/// The timeline inside a bundle of OpenTimelineIO: "content.otio" in a zip archive (.otioz) or a folder
/// (.otiod), whatever their names. Empty where the path is no bundle.
std::filesystem::path contentOfBundle(const std::filesystem::path& path);

/// Reads a file of JSON, or what contentOfBundle() tells. The media of an archive are read in place: paths
/// that lead into it are paths for SoundFile and DecodedCache. Throws std::system_error for what cannot be
/// read, and SoundFileError for a damaged archive; the texts name the file.
/// \snippet timeline.cpp file
TimelineText readTimelineText(const std::filesystem::path& path);

} // namespace audlmd::timeline
