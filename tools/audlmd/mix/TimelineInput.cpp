#include "tools/audlmd/mix/TimelineInput.hpp"

#include "host/cache/FilmContainer.hpp"
#include "host/cache/SoundFile.hpp"
#include "host/timeline/TimelineError.hpp"
#include "host/timeline/TimelineFiles.hpp"
#include "host/timeline/TimelineText.hpp"
#include "host/words/Text.hpp"
#include "tools/audlmd/CommandError.hpp"

#include <algorithm>
#include <cerrno>
#include <cstdint>
#include <fstream>
#include <iterator>
#include <map>
#include <sstream>
#include <stdexcept>
#include <string>
#include <string_view>
#include <system_error>
#include <unordered_map>
#include <utility>

namespace audlmd::command {
namespace {

timeline::TimelineText readText(const std::filesystem::path& path) {
    try {
        return timeline::readTimelineText(path);
    } catch (const std::system_error& error) {
        throw CommandError("'" + words::printable(path.string()) +
                               "' cannot be read: " + error.code().message(),
                           ExitStatus::input);
    } catch (const SoundFileError& error) {
        throw CommandError(words::printable(error.what(), std::string::npos), ExitStatus::input);
    }
}

bool isSound(const std::filesystem::path& path) {
    try {
        const SoundFile file(path);
        return true;
    } catch (const SoundFileError&) {
        return false;
    }
}

/// Names the file, and what can be read in its place where the file is something else.
[[noreturn]] void refuse(const std::filesystem::path& path, const std::string& text, const char* reason) {
    const std::string name = "'" + words::printable(path.string()) + "'";
    const bool isJson = timeline::mayBeTimeline(text);
    if (!isJson && (isFilmContainer(path) || isSound(path)))
        throw CommandError(name + " is a sound file or a film, not a timeline; use audlmd render for it",
                           ExitStatus::input);
    const bool isOurs =
        text.find("\"OTIO_SCHEMA\"") != std::string::npos || text.find("\"audlmd\"") != std::string::npos;
    throw CommandError(name + ": " + words::printable(reason, std::string::npos) +
                           (isOurs ? ""
                                   : "; what can be read is OpenTimelineIO JSON (.otio), which otioconvert "
                                     "makes of other timelines, and what mix --list --as json writes"),
                       ExitStatus::input);
}

/// The strips of one medium.
struct Use {
    std::size_t track = 0;
    std::size_t firstStrip = 0;
    std::size_t count = 0;
    /// Whether one of them has no routing of its own.
    bool usesDefaultRouting = false;
};

bool soundsIn(const TimelineStrip& strip, TimelineSpan part) {
    return strip.silence.empty() && strip.at < part.to && strip.at + strip.length > part.from;
}

std::map<std::string, Use> usesOf(const Timeline& timeline, TimelineSpan part) {
    std::map<std::string, Use> uses;
    for (std::size_t track = 0; track < timeline.tracks.size(); ++track)
        for (std::size_t i = 0; i < timeline.tracks[track].strips.size(); ++i)
            if (const TimelineStrip& strip = timeline.tracks[track].strips[i]; soundsIn(strip, part)) {
                Use& use = uses.try_emplace(strip.media, Use{track, i}).first->second;
                ++use.count;
                use.usesDefaultRouting |= !strip.routing;
            }
    return uses;
}

std::string clips(const Use& use) {
    return use.count > 1 ? " (" + std::to_string(use.count) + " clips)" : "";
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

/// How a medium with more channels than the timeline is played, or why it cannot be.
void lookAtChannels(const timeline::FoundMedium& medium, const Timeline& timeline, const Use& use,
                    TimelineNote note, MediaCheck& check) {
    if (!use.usesDefaultRouting || medium.layout.size() <= timeline.channels)
        return;
    const ChannelLayout& stated = timeline.tracks[use.track].strips[use.firstStrip].layout;
    try {
        note.text = foldDownText(stated.empty() ? medium.layout : stated, layoutOf(timeline)) + clips(use);
        check.choices.push_back(std::move(note));
    } catch (const std::invalid_argument& error) {
        note.text = error.what() + clips(use);
        note.silences = true;
        check.failures.push_back(std::move(note));
    }
}

} // namespace

bool isTimelineFile(const std::filesystem::path& path) {
    const bool isNamedSo = path.extension() == ".otio" || path.extension() == ".json" ||
                           path.extension() == ".otioz" || path.extension() == ".otiod";
    std::error_code none;
    if (!timeline::contentOfBundle(path).empty())
        return true;
    // What is read from a pipe is gone.
    if (!std::filesystem::is_regular_file(path, none))
        return isNamedSo;
    std::string start(64, ' ');
    std::ifstream(path, std::ios::binary).read(start.data(), std::ssize(start));
    return timeline::mayBeTimeline(start) || (isNamedSo && !isSound(path));
}

Timeline readTimelineFile(const std::filesystem::path& path, const AskedOutput& asked,
                          timeline::MediaFinder& finder) {
    const std::optional<ChannelLayout>& channels = asked.channels.channels;
    if (channels && asked.channels.map)
        throw CommandError(
            "--channels and --map cannot stand together for a timeline; choose channels of the "
            "mix when it is written");
    const auto [text, folder] = readText(path);
    const timeline::ReadOptions how{
        .sampleRate = asked.rate.value_or(48000),
        .channels = channels ? channels->size() : 2,
        .folder = folder,
        .timeline = asked.timeline,
        .media = [&finder](const std::string& media) { return finder.factsOf(media); }};
    const auto parse = [&how, &path, &text = text] {
        try {
            return timeline::readTimeline(text, how);
        } catch (const std::runtime_error& error) {
            refuse(path, text, error.what());
        }
    };
    Timeline read = parse();
    if (asked.rate && *asked.rate != read.sampleRate)
        throw CommandError("--rate: the timeline itself says " + std::to_string(read.sampleRate) +
                           ", and its times depend on that; leave the option out");
    if (channels && isKnown(*channels) && channels->size() == read.channels)
        read.layout = usualLayout(read.channels);
    read.foldDown = asked.channels.foldDownOf(layoutOf(read), path.string());
    return read;
}

std::vector<Marker> markersOf(const Timeline& timeline) {
    std::vector<Marker> markers;
    for (const TimelineMarker& marker : timeline.markers)
        markers.push_back({.position = marker.at.number(), .name = marker.name});
    std::ranges::stable_sort(markers, {}, &Marker::position);
    return markers;
}

MediaCheck checkMedia(const Timeline& timeline, TimelineSpan part, timeline::MediaFinder& finder) {
    MediaCheck check;
    for (const auto& [media, use] : usesOf(timeline, part)) {
        const timeline::FoundMedium& medium = finder.find(media);
        TimelineNote note{.where = timeline::whereIs(timeline, use.track, use.firstStrip).text(),
                          .text = {},
                          .at = timeline.tracks[use.track].strips[use.firstStrip].at};
        if (!medium.path.empty())
            check.files.push_back(medium.path);
        check.files.insert(check.files.end(), medium.others.begin(), medium.others.end());
        if (!medium.failure.empty()) {
            note.text = medium.failure + clips(use);
            note.silences = true;
            check.failures.push_back(std::move(note));
            continue;
        }
        lookAtChannels(medium, timeline, use, note, check);
        if (!medium.note.empty()) {
            note.text = medium.note + clips(use);
            check.choices.push_back(note);
        }
        if (medium.equallyGood > 1) {
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
