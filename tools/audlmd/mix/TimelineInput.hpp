#pragma once

#include "host/mix/MixReport.hpp"
#include "host/mix/Timeline.hpp"
#include "host/timeline/MediaFinder.hpp"
#include "tools/audlmd/files/Markers.hpp"
#include "tools/audlmd/options/ChannelOptions.hpp"

#include <cstddef>
#include <filesystem>
#include <optional>
#include <string>
#include <vector>

namespace audlmd::command {

/// What the command line asks of the output. Not set: what the timeline says, else 48000 Hz and 2 channels.
struct AskedOutput {
    std::optional<int> rate;
    ChannelOptions channels = {};
    /// See timeline::ReadOptions.
    std::string timeline = {};
};

/// Whether a file is to be read as a timeline: its content decides. Where the file is neither JSON nor a
/// sound file, or cannot be read, the extension decides which of both errors there will be.
bool isTimelineFile(const std::filesystem::path& path);

/// Reads a timeline's file; asks the finder about its media. Throws CommandError for a file that cannot be
/// read or is no timeline, and where the command line asks for another rate than the timeline says. The text
/// names the file. Other channels than the timeline says become its fold-down.
Timeline readTimelineFile(const std::filesystem::path& path, const AskedOutput& asked,
                          timeline::MediaFinder& finder);

std::vector<Marker> markersOf(const Timeline& timeline);

/// What a look at the media of a timeline has shown.
struct MediaCheck {
    /// What stands under the media's names, each once.
    std::vector<std::filesystem::path> files;
    /// One note for each medium that cannot be played, at the first of its clips.
    std::vector<TimelineNote> failures;
    /// One note for each medium that several files fit equally well, or that is folded down.
    std::vector<TimelineNote> choices;
};

/// Looks at the medium of every strip that sounds in a part of the output, each medium once. A strip that is
/// silent anyway needs none.
MediaCheck checkMedia(const Timeline& timeline, TimelineSpan part, timeline::MediaFinder& finder);

/// The timeline's notes on silence in a part of the output. A note on a strip counts where the strip sounds,
/// any other from its place on.
std::vector<TimelineNote> silencesIn(const Timeline& timeline, TimelineSpan part);

} // namespace audlmd::command
