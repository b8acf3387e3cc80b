#include "host/services/SampleRates.hpp"
#include "host/signal/GainLaws.hpp"
#include "host/signal/Speed.hpp"
#include "host/timeline/JsonParts.hpp"
#include "host/timeline/MediaRange.hpp"
#include "host/timeline/TimelineFiles.hpp"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <limits>
#include <set>
#include <stdexcept>
#include <utility>

namespace audlmd::timeline {
namespace {

constexpr int mostChannels = 1024;

/// What the strips of a file share.
struct FileContext {
    const ReadOptions& options;
    MediaAnswers& media;
    /// What is read so far, with sample rate and channels.
    Timeline& timeline;

    int sampleRate() const { return timeline.sampleRate; }
};

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
    const std::string& text = value.get_ref<const std::string&>();
    double seconds = 0.0;
    const char* end = text.data() + text.size();
    const auto [stop, error] = std::from_chars(text.data(), end, seconds);
    const double samples = seconds * sampleRate;
    if (error != std::errc() || stop == end || std::string_view(stop, end) != "s" ||
        !(std::abs(samples) <= static_cast<double>(farthestPosition)))
        return std::nullopt;
    return std::llround(samples);
}

/// `otherwise` and `lowest` are samples.
std::int64_t timeIn(Fields& fields, const std::string& key, std::int64_t otherwise, int sampleRate,
                    std::int64_t lowest = 0) {
    const Json* found = fields.find(key);
    if (found == nullptr)
        return otherwise;
    const std::optional<std::int64_t> time = timeOf(*found, sampleRate);
    if (!time || *time < lowest)
        fields.fail(key,
                    std::string("must be a whole number of samples, or seconds as a text like \"1.5s\", ") +
                        (lowest == 0 ? "not negative, " : "") + "and at most 2^60 samples");
    return *time;
}

/// Leaves `samples` and `curve` as they are where there is no fade.
void readFade(Fields& parent, const std::string& key, int sampleRate, std::uint64_t& samples,
              FadeCurve& curve) {
    const Json* found = parent.find(key);
    if (found == nullptr)
        return;
    Fields fields(*found, parent.where());
    samples = static_cast<std::uint64_t>(timeIn(fields, "length", 0, sampleRate));
    curve = fields.word("curve", curveWords).value_or(curve);
    fields.finish();
}

/// A level may exceed +10 dB by 1e-6 dB, the rounding of a level that writeJson() has written.
std::optional<AutomationWalk> automationIn(Fields& parent, int sampleRate) {
    const Json* found = parent.find("automation");
    if (found == nullptr)
        return std::nullopt;
    Fields fields(*found, parent.where());
    const bool reverse = fields.flag("reverse", false);
    std::vector<LevelNode> nodes;
    if (const Json* points = fields.list("points"))
        for (const Json& point : *points) {
            const bool isPair = point.is_array() && point.size() == 2;
            const std::optional<std::int64_t> time = isPair ? timeOf(point[0], sampleRate) : std::nullopt;
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
        parent.where().fail(error.what());
    }
}

/// From "from" to "to", or to the end of the file. The length of a file counts in the file's own rate and is
/// converted to the timeline's.
void readRange(Fields& fields, const FileContext& file, TimelineStrip& strip) {
    StripSettings& settings = strip.settings;
    settings.from = timeIn(fields, "from", 0, file.sampleRate(), -farthestPosition);
    std::int64_t end = 0;
    if (fields.find("to") == nullptr) {
        const auto& [facts, problem] = file.media.of(strip.media);
        if (!facts)
            fields.fail("to", "is missing, and the length of the file is not known" +
                                  (problem.empty() ? "" : ": " + problem));
        end = lengthAt(file.sampleRate(), *facts);
    }
    settings.to = timeIn(fields, "to", end, file.sampleRate(), -farthestPosition);
    if (settings.to < settings.from)
        fields.fail("to", "lies before \"from\"");
}

/// Without "length" a strip lasts as long as its range gives samples, after the part that is skipped.
void readPlace(Fields& fields, const FileContext& file, TimelineStrip& strip) {
    const StripSettings& settings = strip.settings;
    strip.at = timeIn(fields, "at", 0, file.sampleRate());
    strip.skip = timeIn(fields, "skip", 0, file.sampleRate());
    const double samples = std::ceil(static_cast<double>(settings.to - settings.from) / settings.speed);
    const double whole = std::clamp(samples - static_cast<double>(strip.skip.number()), 0.0, 0x1p60);
    strip.length = timeIn(fields, "length", static_cast<std::int64_t>(whole), file.sampleRate());
    if (!isInRange((strip.at + strip.length).number()))
        fields.fail("length", "leads beyond 2^60 samples");
}

/// What StripPlayer would refuse, as a sentence that names the strip.
void requirePlayable(const StripSettings& settings, const Where& where) {
    try {
        if (settings.speed != 1.0 && settings.converter == Converter::none)
            where.fail("a speed other than 1 needs a converter");
        if (settings.to - settings.from > longestRange)
            where.fail("plays more samples than any file can have");
        FadeEnvelope(settings.fade, static_cast<std::uint64_t>(settings.to - settings.from));
    } catch (const std::invalid_argument& error) {
        where.fail(error.what());
    }
    requireBands(settings.equaliser, settings.sampleRate, where);
}

void noteUnplayed(const TimelineStrip& strip, const Where& where, const FileContext& file) {
    if (!strip.silence.empty())
        return;
    std::optional<std::int64_t> length;
    if (const std::optional<MediaFacts>& facts = file.media.of(strip.media).facts)
        length = lengthAt(file.sampleRate(), *facts);
    noteSilentEnds(strip, length, 0, false, where, file.timeline);
    noteOutsideAutomation(strip, where, file.timeline);
}

/// The name is read first, so that every message about the strip can show it.
TimelineStrip readStrip(const Json& value, Where where, const FileContext& file) {
    if (const std::string name = textIn(value, "name"); !name.empty())
        where.clip = name;
    Fields fields(value, where);
    TimelineStrip strip;
    StripSettings& settings = strip.settings;
    strip.name = fields.text("name", "");
    strip.media = pathFrom(fields.text("media", ""), file.options);
    // The system would take the part before the byte for the whole name.
    if (strip.media.find('\0') != std::string::npos)
        fields.fail("media", "has a zero byte, which no file's name can have");
    strip.silence = fields.text("silence", "");
    settings.sampleRate = file.sampleRate();
    settings.reverse = fields.flag("reverse", false);
    settings.speed = fields.number("speed", 1.0, slowestSpeed, fastestSpeed);
    settings.converter = fields.word("converter", converterWords)
                             .value_or(settings.speed == 1.0 ? Converter::none : Converter::filtering);
    const bool takesLinear = settings.converter == Converter::filtering && !isFilteringSpeed(settings.speed);
    if (takesLinear)
        settings.converter = Converter::linear;
    readRange(fields, file, strip);
    readPlace(fields, file, strip);
    if (takesLinear)
        file.timeline.notes.push_back({.where = where.text(), .text = linearInstead, .at = strip.at});
    FadePlan& fade = settings.fade;
    readFade(fields, "fadeIn", file.sampleRate(), fade.fadeInSamples, fade.fadeInCurve);
    readFade(fields, "fadeOut", file.sampleRate(), fade.fadeOutSamples, fade.fadeOutCurve);
    settings.equaliser = equaliserIn(fields, file.options);
    strip.gainDb = fields.decibels("gain", 0.0, highestGainDb);
    settings.automation = automationIn(fields, file.sampleRate());
    strip.routing = routingIn(fields, file.timeline.channels);
    fields.finish();
    if (strip.silence.empty())
        requirePlayable(settings, where);
    noteUnplayed(strip, where, file);
    return strip;
}

/// `number` names a track without a name in messages.
TimelineTrack readTrack(const Json& value, const std::string& number, const FileContext& file) {
    const Where where{textIn(value, "name", number), {}};
    Fields fields(value, where);
    TimelineTrack track{fields.text("name", ""), {}};
    if (const Json* strips = fields.list("strips"))
        for (const Json& strip : *strips)
            track.strips.push_back(
                readStrip(strip, {where.track, "#" + std::to_string(track.strips.size() + 1)}, file));
    fields.finish();
    return track;
}

void readMarkersAndNotes(Fields& fields, Timeline& timeline) {
    if (const Json* markers = fields.list("markers"))
        for (const Json& value : *markers) {
            Fields marker(value, {});
            const std::string name = marker.text("name", "");
            timeline.markers.push_back({name, timeIn(marker, "at", 0, timeline.sampleRate)});
            marker.finish();
        }
    if (const Json* notes = fields.list("notes"))
        for (const Json& value : *notes) {
            Fields note(value, {});
            // Shown as they are.
            const auto text = [&](const char* key) {
                return printable(note.text(key, ""), std::string_view::npos);
            };
            TimelineNote read{text("where"), text("text")};
            if (note.find("at") != nullptr)
                read.at = timeIn(note, "at", 0, timeline.sampleRate, -farthestPosition);
            read.silences = note.flag("silences", false);
            note.finish();
            timeline.notes.push_back(std::move(read));
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
    Fields fields(root, {});
    if (fields.whole("audlmd", 0, std::numeric_limits<std::int64_t>::min(),
                     std::numeric_limits<std::int64_t>::max()) != 1)
        fields.fail("audlmd", "must be 1, the version of the timeline");
    Timeline timeline;
    timeline.name = fields.text("name", "");
    timeline.sampleRate =
        static_cast<int>(fields.whole("sampleRate", options.sampleRate, lowestSampleRate, highestSampleRate));
    timeline.channels = static_cast<std::size_t>(
        fields.whole("channels", static_cast<std::int64_t>(options.channels), 1, mostChannels));
    if (!options.timeline.empty() && timeline.name != options.timeline)
        throw TimelineError("no timeline of the file is named '" + printable(options.timeline) +
                            "'; there is '" + printable(timeline.name) + "'");
    timeline.timeReference = timeIn(fields, "timeReference", 0, timeline.sampleRate);
    readMarkersAndNotes(fields, timeline);
    MediaAnswers media(options);
    const FileContext file{options, media, timeline};
    TimelineSample end;
    if (const Json* tracks = fields.list("tracks"))
        for (const Json& track : *tracks) {
            timeline.tracks.push_back(
                readTrack(track, "#" + std::to_string(timeline.tracks.size() + 1), file));
            for (const TimelineStrip& strip : timeline.tracks.back().strips)
                end = std::max(end, strip.at + strip.length);
        }
    timeline.length = timeIn(fields, "length", end.number(), timeline.sampleRate);
    dropRepeatedNotes(timeline.notes);
    fields.finish();
    return timeline;
}

} // namespace audlmd::timeline
