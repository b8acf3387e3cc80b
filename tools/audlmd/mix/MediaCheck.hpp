#pragma once

#include "host/mix/MixReport.hpp"
#include "host/mix/Timeline.hpp"
#include "tools/audlmd/mix/MediaFinder.hpp"

#include <filesystem>
#include <vector>

namespace audlmd::command {

/// What a look at the media of a timeline has shown.
struct MediaCheck {
    /// What stands under the media's names, each once.
    std::vector<std::filesystem::path> files;
    /// One note for each medium that cannot be played, at the first of its clips.
    std::vector<TimelineNote> failures;
    /// One note for each medium that several files fit equally well.
    std::vector<TimelineNote> choices;
};

/// Looks at the medium of every strip that sounds in a part of the output, each medium once. A strip that is
/// silent anyway needs none.
MediaCheck checkMedia(const Timeline& timeline, TimelineSpan part, MediaFinder& finder);

/// The timeline's notes on silence in a part of the output. A note on a strip counts where the strip sounds,
/// any other from its place on.
std::vector<TimelineNote> silencesIn(const Timeline& timeline, TimelineSpan part);

} // namespace audlmd::command
