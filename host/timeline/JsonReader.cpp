#include "host/timeline/JsonReader.hpp"

#include "host/mix/Media.hpp"
#include "host/services/SampleRates.hpp"
#include "host/signal/GainLaws.hpp"
#include "host/signal/Speed.hpp"
#include "host/timeline/StrictObject.hpp"
#include "host/timeline/StripCheck.hpp"
#include "host/timeline/TimelineError.hpp"
#include "host/words/StripWords.hpp"
#include "host/words/Text.hpp"
#include "host/words/Times.hpp"

#include <algorithm>
#include <cmath>
#include <limits>
#include <set>
#include <stdexcept>
#include <utility>

namespace audlmd::timeline {
namespace {

constexpr int mostChannels = 1024;

bool isInRange(std::int64_t samples) {
    return samples >= -farthestPosition && samples <= farthestPosition;
}

/// A whole number of samples, or seconds as a text: "1.5s". Nothing for anything else.
std::optional<std::int64_t> timeOf(const Json& value, int sampleRate) {
    // Integers above the signed range are stored without a sign, and would wrap.
    if (value.is_number_integer() && std::abs(value.get<double>()) <= static_cast<double>(farthestPosition) &&
        isInRange(value.get<std::int64_t>()))
        return value.get<std::int64_t>();
    if (!value.is_string())
        return std::nullopt;
    const std::optional<double> seconds = words::secondsIn(value.get_ref<const std::string&>());
    if (!seconds || !(std::abs(*seconds * sampleRate) <= static_cast<double>(farthestPosition)))
        return std::nullopt;
    return std::llround(*seconds * sampleRate);
}

/// `otherwise` and `lowest` are samples.
std::int64_t timeIn(StrictObject& fields, const std::string& key, std::int64_t otherwise,
                    std::int64_t lowest = 0) {
    const Json* found = fields.find(key);
    if (found == nullptr)
        return otherwise;
    const std::optional<std::int64_t> time = timeOf(*found, fields.reading().timeline.sampleRate);
    if (!time || *time < lowest)
        fields.fail(key,
                    std::string("must be a whole number of samples, or seconds as a text like \"1.5s\", ") +
                        (lowest == 0 ? "not negative, " : "") + "and at most 2^60 samples");
    return *time;
}

/// Leaves `samples` and `curve` as they are where there is no fade.
void readFade(StrictObject& parent, const std::string& key, std::uint64_t& samples, FadeCurve& curve) {
    const Json* found = parent.find(key);
    if (found == nullptr)
        return;
    StrictObject fields(*found, parent.reading());
    samples = static_cast<std::uint64_t>(timeIn(fields, "length", 0));
    curve = fields.word("curve", words::curveWords).value_or(curve);
    fields.finish();
}

/// A level may exceed +10 dB by 1e-6 dB, the rounding of a level that writeJson() has written.
std::optional<AutomationWalk> automationIn(StrictObject& parent) {
    const Json* found = parent.find("automation");
    if (found == nullptr)
        return std::nullopt;
    StrictObject fields(*found, parent.reading());
    const bool reverse = fields.flag("reverse", false);
    std::vector<LevelNode> nodes;
    if (const Json* points = fields.list("points"))
        for (const Json& point : *points) {
            const bool isPair = point.is_array() && point.size() == 2;
            const std::optional<std::int64_t> time =
                isPair ? timeOf(point[0], parent.reading().timeline.sampleRate) : std::nullopt;
            const std::optional<double> level =
                isPair ? decibelsOf(point[1], faderTopDecibels + 1e-6) : std::nullopt;
            if (!time || !level)
                fields.fail("points", "must be a list of [time, decibels up to 10 or \"-inf\"]");
            nodes.push_back({*time, static_cast<float>(mixerStyleUValueOfDecibels(*level))});
        }
    fields.finish();
    try {
        return AutomationWalk{Automation(std::move(nodes)),
                              reverse ? DynamicLevelDirection::reverse : DynamicLevelDirection::forwards};
    } catch (const std::invalid_argument& error) {
        parent.reading().fail(error.what());
    }
}

/// A path as it stands in "media", or in the list "files".
std::string pathIn(StrictObject& fields, const std::string& key, const std::string& path) {
    // The system would take the part before the byte for the whole name.
    if (path.find('\0') != std::string::npos)
        fields.fail(key, "has a zero byte, which no file's name can have");
    return fields.reading().pathOf(path);
}

/// One file, or the files of one recording, such as those of a recorder that writes a file for each channel.
std::string mediaIn(StrictObject& fields) {
    std::string media = pathIn(fields, "media", fields.text("media", ""));
    const Json* files = fields.list("files");
    if (files == nullptr)
        return media;
    std::vector<std::string> paths;
    for (const Json& file : *files)
        if (file.is_string() && !file.get_ref<const std::string&>().empty())
            paths.push_back(pathIn(fields, "files", file.get<std::string>()));
    if (paths.empty() || paths.size() != files->size() || !media.empty())
        fields.fail("files", "must be a list of paths, in place of \"media\"");
    return jointName(paths);
}

/// "layout", as a user names it. Empty where there is none.
ChannelLayout layoutIn(StrictObject& fields) {
    const std::string name = fields.text("layout", "");
    const std::optional<ChannelLayout> layout = name.empty() ? ChannelLayout() : layoutNamed(name);
    if (!layout)
        fields.fail("layout", "must be one of " + layoutNames());
    return *layout;
}

/// From "from" to "to", or to the end of the file. The length of a file counts in the file's own rate and is
/// converted to the timeline's.
void readRange(StrictObject& fields, TimelineStrip& strip) {
    StripSettings& settings = strip.settings;
    settings.from = timeIn(fields, "from", 0, -farthestPosition);
    std::int64_t end = 0;
    if (fields.find("to") == nullptr) {
        const Reading& reading = fields.reading();
        const std::optional<std::int64_t> length = reading.lengthOf(strip.media, strip.relabel);
        const std::string& problem = reading.media.of(strip.media).problem;
        if (!length)
            fields.fail("to", "is missing, and the length of the file is not known" +
                                  (problem.empty() ? "" : ": " + problem));
        end = *length;
    }
    settings.to = timeIn(fields, "to", end, -farthestPosition);
    if (settings.to < settings.from)
        fields.fail("to", "lies before \"from\"");
}

/// Without "length" a strip lasts as long as its range gives samples, after the part that is skipped.
void readPosition(StrictObject& fields, TimelineStrip& strip) {
    const StripSettings& settings = strip.settings;
    strip.at = timeIn(fields, "at", 0);
    strip.skip = timeIn(fields, "skip", 0);
    const double samples = std::ceil(static_cast<double>(settings.to - settings.from) / settings.speed);
    const double whole = std::clamp(samples - static_cast<double>(strip.skip.number()), 0.0, 0x1p60);
    strip.length = timeIn(fields, "length", static_cast<std::int64_t>(whole));
    if (!isInRange((strip.at + strip.length).number()))
        fields.fail("length", "leads beyond 2^60 samples");
}

/// What StripPlayer would refuse, as a sentence that names the strip.
void requirePlayable(const StripSettings& settings, const Reading& reading) {
    try {
        if (settings.speed != 1.0 && settings.converter == Converter::none)
            reading.fail("a speed other than 1 needs a converter");
        if (settings.to - settings.from > longestRange)
            reading.fail("plays more samples than any file can have");
        FadeEnvelope(settings.fade, static_cast<std::uint64_t>(settings.to - settings.from));
    } catch (const std::invalid_argument& error) {
        reading.fail(error.what());
    }
    requireBands(settings.equaliser, reading);
}

void noteUnplayed(const TimelineStrip& strip, const Reading& reading) {
    if (!strip.silence.empty())
        return;
    noteSilentEnds(strip, reading.lengthOf(strip.media, strip.relabel), 0, false, reading);
    noteOutsideAutomation(strip, reading);
}

/// Without "converter" a speed other than 1 takes the best one.
void readSpeed(StrictObject& fields, StripSettings& settings) {
    settings.speed = fields.number("speed", 1.0, slowestSpeed, fastestSpeed);
    settings.converter = fields.word("converter", words::converterWords)
                             .value_or(settings.speed == 1.0 ? Converter::none : Converter::best);
}

/// The name is read first, so that every message about the strip can show it.
TimelineStrip readStrip(const Json& value, Reading reading) {
    if (const std::string name = textIn(value, "name"); !name.empty())
        reading.where.clip = name;
    StrictObject fields(value, reading);
    TimelineStrip strip;
    StripSettings& settings = strip.settings;
    strip.name = fields.text("name", "");
    strip.media = mediaIn(fields);
    strip.layout = layoutIn(fields);
    strip.silence = fields.text("silence", "");
    strip.relabel = relabelIn(fields);
    settings.sampleRate = reading.timeline.sampleRate;
    settings.reverse = fields.flag("reverse", false);
    readSpeed(fields, settings);
    readRange(fields, strip);
    readPosition(fields, strip);
    readFade(fields, "fadeIn", settings.fade.fadeInSamples, settings.fade.fadeInCurve);
    readFade(fields, "fadeOut", settings.fade.fadeOutSamples, settings.fade.fadeOutCurve);
    settings.equaliser = equaliserIn(fields);
    if (const std::string note = settleConverter(settings); !note.empty())
        reading.note(note, strip.at);
    strip.gainDb = fields.decibels("gain", 0.0, highestGainDb);
    settings.automation = automationIn(fields);
    strip.routing = routingIn(fields);
    strip.pan = fields.number("pan", 0.0, -100.0, 100.0);
    fields.finish();
    if (strip.silence.empty())
        requirePlayable(settings, reading);
    noteUnplayed(strip, reading);
    return strip;
}

/// `number` names a track without a name in messages.
TimelineTrack readTrack(const Json& value, const std::string& number, const Reading& whole) {
    const Reading reading = whole.at({textIn(value, "name", number), {}});
    StrictObject fields(value, reading);
    TimelineTrack track{fields.text("name", ""), {}};
    if (const Json* strips = fields.list("strips"))
        for (const Json& strip : *strips)
            track.strips.push_back(readStrip(
                strip, reading.at({reading.where.track, "#" + std::to_string(track.strips.size() + 1)})));
    fields.finish();
    return track;
}

void readMarkers(StrictObject& fields, const Reading& reading) {
    if (const Json* markers = fields.list("markers"))
        for (const Json& value : *markers) {
            StrictObject marker(value, reading);
            const std::string name = marker.text("name", "");
            reading.timeline.markers.push_back({name, timeIn(marker, "at", 0)});
            marker.finish();
        }
}

void readNotes(StrictObject& fields, const Reading& reading) {
    if (const Json* notes = fields.list("notes"))
        for (const Json& value : *notes) {
            StrictObject note(value, reading);
            // Shown as they are.
            const auto text = [&](const char* key) {
                return words::printable(note.text(key, ""), std::string_view::npos);
            };
            TimelineNote read{text("where"), text("text")};
            if (note.find("at") != nullptr)
                read.at = timeIn(note, "at", 0, -farthestPosition);
            read.silences = note.flag("silences", false);
            note.finish();
            reading.timeline.notes.push_back(std::move(read));
        }
}

/// What the file notes itself comes first. A timeline that writeJson() has written notes what would be found
/// again.
void dropRepeatedNotes(std::vector<TimelineNote>& notes) {
    std::set<std::pair<std::string, std::string>> seen;
    std::erase_if(notes,
                  [&](const TimelineNote& note) { return !seen.emplace(note.where, note.text).second; });
}

} // namespace

Timeline readJson(const Json& root, const ReadOptions& options) {
    Timeline timeline;
    MediaAnswers media(options);
    const Reading reading{options, media, timeline};
    StrictObject fields(root, reading);
    if (fields.whole("audlmd", 0, std::numeric_limits<std::int64_t>::min(),
                     std::numeric_limits<std::int64_t>::max()) != 1)
        fields.fail("audlmd", "must be 1, the version of the timeline");
    timeline.name = fields.text("name", "");
    timeline.sampleRate =
        static_cast<int>(fields.whole("sampleRate", options.sampleRate, lowestSampleRate, highestSampleRate));
    timeline.channels = static_cast<std::size_t>(
        fields.whole("channels", static_cast<std::int64_t>(options.channels), 1, mostChannels));
    if (!options.timeline.empty() && timeline.name != options.timeline)
        throw TimelineError("no timeline of the file is named '" + words::printable(options.timeline) +
                            "'; there is '" + words::printable(timeline.name) + "'");
    timeline.timeReference = timeIn(fields, "timeReference", 0);
    timeline.frameRate = fields.number("frameRate", 0.0, 0.0, 1000.0);
    if (timeline.frameRate != 0.0 && !words::isFrameRate(timeline.frameRate))
        fields.fail("frameRate", "must be a whole number, or one times 1000/1001, up to 1000");
    readMarkers(fields, reading);
    readNotes(fields, reading);
    TimelineSample end;
    if (const Json* tracks = fields.list("tracks"))
        for (const Json& track : *tracks) {
            timeline.tracks.push_back(
                readTrack(track, "#" + std::to_string(timeline.tracks.size() + 1), reading));
            for (const TimelineStrip& strip : timeline.tracks.back().strips)
                end = std::max(end, strip.at + strip.length);
        }
    timeline.length = timeIn(fields, "length", end.number());
    dropRepeatedNotes(timeline.notes);
    fields.finish();
    return timeline;
}

} // namespace audlmd::timeline
