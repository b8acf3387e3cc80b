#include "tools/audlmd/mix/MediaCheck.hpp"

#include "host/timeline/TimelineError.hpp"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <iterator>
#include <map>
#include <string>
#include <unordered_map>

namespace audlmd::command {
namespace {

/// The strips of one medium.
struct Use {
    std::size_t track = 0;
    std::size_t firstStrip = 0;
    std::size_t count = 0;
};

bool soundsIn(const TimelineStrip& strip, TimelineSpan part) {
    return strip.silence.empty() && strip.at < part.to && strip.at + strip.length > part.from;
}

std::map<std::string, Use> usesOf(const Timeline& timeline, TimelineSpan part) {
    std::map<std::string, Use> uses;
    for (std::size_t track = 0; track < timeline.tracks.size(); ++track)
        for (std::size_t i = 0; i < timeline.tracks[track].strips.size(); ++i)
            if (const TimelineStrip& strip = timeline.tracks[track].strips[i]; soundsIn(strip, part))
                ++uses.try_emplace(strip.media, Use{track, i, 0}).first->second.count;
    return uses;
}

std::string placeOf(const std::string& where, TimelineSample at) {
    return where + "\n" + std::to_string(at.number());
}

/// Where the strips end, by name and start. Among equals the last end.
std::unordered_map<std::string, TimelineSample> endsOf(const Timeline& timeline) {
    std::unordered_map<std::string, TimelineSample> ends;
    for (std::size_t track = 0; track < timeline.tracks.size(); ++track)
        for (std::size_t i = 0; i < timeline.tracks[track].strips.size(); ++i) {
            const TimelineStrip& strip = timeline.tracks[track].strips[i];
            TimelineSample& end = ends[placeOf(timeline::whereIs(timeline, track, i).text(), strip.at)];
            end = std::max(end, strip.at + strip.length);
        }
    return ends;
}

} // namespace

MediaCheck checkMedia(const Timeline& timeline, TimelineSpan part, MediaFinder& finder) {
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

std::vector<TimelineNote> silencesIn(const Timeline& timeline, TimelineSpan part) {
    std::vector<TimelineNote> silences;
    std::ranges::copy_if(timeline.notes, std::back_inserter(silences), &TimelineNote::silences);
    if (silences.empty())
        return silences;
    const std::unordered_map<std::string, TimelineSample> ends = endsOf(timeline);
    std::erase_if(silences, [&](const TimelineNote& note) {
        if (!note.at)
            return false;
        const auto end = ends.find(placeOf(note.where, *note.at));
        return *note.at >= part.to || (end != ends.end() && end->second <= part.from);
    });
    return silences;
}

} // namespace audlmd::command
