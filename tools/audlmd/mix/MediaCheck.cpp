#include "tools/audlmd/mix/MediaCheck.hpp"

#include "tools/timeline/TimelineFiles.hpp"

#include <cstddef>
#include <map>
#include <string>

namespace audlmd::command {
namespace {

/// The strips of one medium.
struct Use {
    std::size_t track = 0;
    std::size_t firstStrip = 0;
    std::size_t count = 0;
};

bool soundsIn(const TimelineStrip& strip, OutputSpan part) {
    return strip.silence.empty() && strip.at < part.to && strip.at + strip.length > part.from;
}

std::map<std::string, Use> usesOf(const Timeline& timeline, OutputSpan part) {
    std::map<std::string, Use> uses;
    for (std::size_t track = 0; track < timeline.tracks.size(); ++track)
        for (std::size_t i = 0; i < timeline.tracks[track].strips.size(); ++i)
            if (const TimelineStrip& strip = timeline.tracks[track].strips[i]; soundsIn(strip, part))
                ++uses.try_emplace(strip.media, Use{track, i, 0}).first->second.count;
    return uses;
}

} // namespace

MediaCheck checkMedia(const Timeline& timeline, OutputSpan part, MediaFinder& finder) {
    MediaCheck check;
    for (const auto& [media, use] : usesOf(timeline, part)) {
        const FoundMedium& medium = finder.find(media);
        TimelineNote note{.where = timeline::whereIs(timeline, use.track, use.firstStrip).text(),
                          .text = {},
                          .at = timeline.tracks[use.track].strips[use.firstStrip].at};
        if (!medium.path.empty())
            check.files.push_back(medium.path);
        if (!medium.failure.empty()) {
            note.text = medium.failure;
            if (use.count > 1)
                note.text += " (" + std::to_string(use.count) + " clips)";
            note.silences = true;
            check.failures.push_back(std::move(note));
        } else if (medium.equallyGood > 1) {
            note.text = std::to_string(medium.equallyGood) + " files fit '" + media +
                        "' equally well; taken is '" + medium.path.string() + "'";
            check.choices.push_back(std::move(note));
        }
    }
    return check;
}

} // namespace audlmd::command
