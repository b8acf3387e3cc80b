#pragma once

#include "host/mix/Timeline.hpp"
#include "tools/audlmd/mix/MediaFinder.hpp"

#include <cstddef>
#include <filesystem>
#include <optional>
#include <string>

namespace audlmd::command {

/// What the command line asks of the output. Not set: what the timeline says, else 48000 Hz and 2 channels.
struct AskedOutput {
    std::optional<int> rate;
    std::optional<std::size_t> channels;
    /// See timeline::ReadOptions.
    std::string timeline = {};
};

/// Whether a file is to be read as a timeline: its content decides. Where the file is neither JSON nor a
/// sound file, or cannot be read, the extension decides which of both errors there will be.
bool isTimelineFile(const std::filesystem::path& path);

/// Reads a timeline's file; asks the finder about its media. Throws CommandError for a file that cannot be
/// read or is no timeline, and where the command line asks for something else than the timeline says. The
/// text names the file.
Timeline readTimelineFile(const std::filesystem::path& path, const AskedOutput& asked, MediaFinder& finder);

} // namespace audlmd::command
