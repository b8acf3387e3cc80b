#include "tools/audlmd/mix/page/PageData.hpp"

#include "host/timeline/StripCheck.hpp"
#include "host/words/Numbers.hpp"
#include "host/words/StripWords.hpp"
#include "host/words/Text.hpp"
#include "host/words/Times.hpp"
#include "tools/audlmd/mix/page/Base64.hpp"
#include "tools/audlmd/mix/page/LinePoints.hpp"
#include "tools/audlmd/mix/page/Problems.hpp"

#include <nlohmann/json.hpp>

#include <algorithm>
#include <cmath>
#include <numeric>
#include <utility>

namespace audlmd::command {

using Json = nlohmann::json;

namespace {

/// Of the waveforms of all clips together.
constexpr double mostWaveBytes = 2e6;
constexpr std::int64_t mostPageColumns = 131072;
constexpr std::int64_t fewestPageColumns = 2048;
/// In samples. Shorter columns show nothing more of a waveform of magnitudes.
constexpr std::int64_t shortestPageColumn = 32;
/// Longer courses of loudness are thinned out.
constexpr std::size_t mostLoudnesses = 18000;

std::string printed(const std::string& text) {
    return words::printable(text, std::string::npos);
}

Json spanJson(const TimelineSpan& span) {
    return {span.from.number(), span.to.number()};
}

Json spansJson(const std::vector<TimelineSpan>& spans) {
    Json json = Json::array();
    for (const TimelineSpan& span : spans)
        json.push_back(spanJson(span));
    return json;
}

/// A byte is a sample in hundredths of full scale; more than that, if only by a little, is more than 100.
char hundredths(float sample) {
    const float magnitude = std::abs(sample);
    const float scaled = magnitude > 1.0F ? std::clamp(std::round(magnitude * 100.0F), 101.0F, 127.0F)
                                          : std::round(magnitude * 100.0F);
    return static_cast<char>(static_cast<signed char>(std::copysign(scaled, sample)));
}

Json waveJson(const OutputCourse& course) {
    std::string low;
    std::string high;
    for (const WaveRange& range : course.wave()) {
        low += hundredths(range.lowest);
        high += hundredths(range.highest);
    }
    return {{"from", course.span().from.number()},
            {"to", course.span().to.number()},
            {"step", course.step()},
            {"low", base64(low)},
            {"high", base64(high)}};
}

Json rounded(std::optional<double> loudness) {
    return loudness && std::isfinite(*loudness) ? Json(std::round(*loudness * 10.0) / 10.0) : Json(nullptr);
}

/// Of neighbours, the highest stands for all.
Json courseJson(const std::vector<double>& course, std::size_t tenths) {
    Json json = Json::array();
    for (std::size_t from = 0; from < course.size(); from += tenths) {
        const auto first = course.begin() + static_cast<std::ptrdiff_t>(from);
        const auto end = first + static_cast<std::ptrdiff_t>(std::min(tenths, course.size() - from));
        json.push_back(rounded(*std::max_element(first, end)));
    }
    return json;
}

Json loudnessJson(const OutputCourse& course) {
    const std::vector<double> momentary = course.loudnessOver(LoudnessMeter::Window::momentary);
    const std::size_t tenths = momentary.size() / mostLoudnesses + 1;
    const ProgrammeLevels programme = course.programme();
    return {{"secondsPerValue", static_cast<double>(tenths) / 10.0},
            {"momentary", courseJson(momentary, tenths)},
            {"shortTerm", courseJson(course.loudnessOver(LoudnessMeter::Window::shortTerm), tenths)},
            {"integrated", rounded(programme.integrated)},
            {"range", rounded(programme.range)}};
}

/// What a user wants to know of a clip: pairs of a name and a text.
class Details {
public:
    Details(const PageSubject& subject, const TimelineStrip& strip)
        : timeline_(subject.timeline), strip_(strip) {
        add("file", strip.silence.empty() ? subject.fileOf(strip.media) : "");
        add("silent", strip.silence);
        add("output", clocks(strip.at, strip.at + strip.length));
        if (timeline_.timeReference != 0)
            add("timecode", onUsersClock(strip.at));
        const MaterialSpan heard = timeline::heardOf(strip);
        add("of the file", clocks(heard.from, heard.to));
        addSound();
    }

    Json json() && { return std::move(json_); }

private:
    void add(const char* name, const std::string& text) {
        if (!text.empty())
            json_.push_back({name, printed(text)});
    }

    template <class Sample>
    std::string clocks(Sample from, Sample to) const {
        return words::clock(from.number(), timeline_.sampleRate) + " \u2013 " +
               words::clock(to.number(), timeline_.sampleRate);
    }

    std::string onUsersClock(TimelineSample at) const {
        const std::int64_t sample = timeline_.timeReference + at.number();
        return words::isFrameRate(timeline_.frameRate) && sample >= 0
                   ? words::timecode(sample, timeline_.sampleRate, timeline_.frameRate) + " at " +
                         words::numberText(timeline_.frameRate) + " frames per second"
                   : words::clock(sample, timeline_.sampleRate);
    }

    std::string fade(std::uint64_t samples, FadeCurve curve) const {
        if (samples == 0)
            return "";
        const double seconds = static_cast<double>(samples) / strip_.settings.speed / timeline_.sampleRate;
        return words::numberText(seconds) + " s, " + std::string(words::wordOf(words::curveWords, curve));
    }

    void addSound() {
        const StripSettings& settings = strip_.settings;
        if (settings.speed != 1.0 || settings.reverse)
            add("speed", words::numberText(settings.speed) + (settings.reverse ? ", backwards" : ""));
        if (strip_.gainDb != 0.0)
            add("gain", words::numberText(strip_.gainDb) + " dB");
        add("fade-in", fade(settings.fade.fadeInSamples, settings.fade.fadeInCurve));
        add("fade-out", fade(settings.fade.fadeOutSamples, settings.fade.fadeOutCurve));
        add("automation", settings.automation ? "yes" : "");
        std::string bands;
        for (const EqualiserBand& band : settings.equaliser)
            bands += (bands.empty() ? "" : "  ") + words::bandText(band);
        add("equaliser", bands);
    }

    const Timeline& timeline_;
    const TimelineStrip& strip_;
    Json json_ = Json::array();
};

Json clipJson(const PageSubject& subject, const TimelineStrip& strip, const StripSketch& sketch) {
    std::string peaks;
    for (const float peak : sketch.peaks)
        peaks += static_cast<char>(static_cast<unsigned char>(std::lround(std::min(peak, 1.0F) * 255.0F)));
    Json json{{"name", printed(sketch.name)},
              {"span", spanJson(sketch.sounds)},
              {"row", sketch.row},
              {"rows", sketch.rows},
              {"note", printed(sketch.note)},
              {"failure", printed(sketch.failure)},
              {"details", Details(subject, strip).json()}};
    // What has no waveform needs no bytes.
    if (std::ranges::any_of(sketch.peaks, [](float peak) { return peak > 0.0F; }))
        json["peaks"] = base64(peaks);
    if (sketch.isSilent)
        json["meantSilent"] = true;
    if (!sketch.silent.empty())
        json["silent"] = spansJson(sketch.silent);
    if (!sketch.overloads.empty())
        json["overloads"] = spansJson(sketch.overloads);
    if (const std::vector<LinePoint> line = fadeLine(sketch); !line.empty())
        json["fade"] = pointsJson(line);
    if (const std::vector<LinePoint> line = levelLine(sketch); !line.empty())
        json["level"] = pointsJson(line);
    return json;
}

Json trackJson(const PageSubject& subject, std::size_t track, const TrackSketch& sketch) {
    const std::string& name = subject.timeline.tracks[track].name;
    Json json{{"name", name.empty() ? "track " + std::to_string(track + 1) : printed(name)},
              {"clips", Json::array()}};
    for (const StripSketch& strip : sketch.strips)
        json["clips"].push_back(
            clipJson(subject, subject.timeline.tracks[track].strips[strip.number], strip));
    return json;
}

/// Where a strip stands in its track's sketch, which leaves out those that do not sound.
std::optional<std::size_t> placeIn(const TimelineSketch& sketch, const StripKey& key) {
    if (key.track >= sketch.tracks.size())
        return std::nullopt;
    const std::vector<StripSketch>& strips = sketch.tracks[key.track].strips;
    const auto found = std::ranges::find(strips, key.strip, &StripSketch::number);
    return found == strips.end() ? std::nullopt
                                 : std::optional(static_cast<std::size_t>(found - strips.begin()));
}

Json problemsJson(const PageSubject& subject, const TimelineSketch& sketch) {
    Json json = Json::array();
    for (const Problem& problem : problemsOf(subject.timeline, subject.report, subject.clips)) {
        json.push_back({{"kind", problem.kind},
                        {"isFault", problem.isFault},
                        {"where", problem.where},
                        {"text", problem.text},
                        {"places", spansJson(problem.places)}});
        if (!problem.strip)
            continue;
        if (const std::optional<std::size_t> clip = placeIn(sketch, *problem.strip))
            json.back()["clip"] = {problem.strip->track, *clip};
    }
    return json;
}

} // namespace

std::size_t pageColumns(const Timeline& timeline) {
    double sounding = 1.0;
    for (const TimelineTrack& track : timeline.tracks)
        for (const TimelineStrip& strip : track.strips)
            sounding += strip.silence.empty() ? static_cast<double>(std::int64_t{strip.length}) : 0.0;
    // How many strips sound at one time, on average: each of them takes a byte a column.
    const double layers = sounding / static_cast<double>(std::max<std::int64_t>(timeline.length, 1));
    const auto affordable = static_cast<std::int64_t>(
        std::min(mostWaveBytes / std::max(layers, 1e-3), static_cast<double>(mostPageColumns)));
    return static_cast<std::size_t>(
        std::max(fewestPageColumns, std::min(affordable, timeline.length / shortestPageColumn)));
}

Json pageData(const PageSubject& subject, const TimelineSketch& sketch) {
    const Timeline& timeline = subject.timeline;
    Json json{{"title", timeline.name.empty() ? "Timeline" : printed(timeline.name)},
              {"sampleRate", timeline.sampleRate},
              {"length", sketch.columns.length},
              {"columns", sketch.columns.count},
              {"channels", outputLayout(timeline).size()},
              {"timeReference", timeline.timeReference},
              {"tracks", Json::array()},
              {"tracksLeftOut", sketch.tracksLeftOut},
              {"markers", Json::array()},
              {"problems", problemsJson(subject, sketch)}};
    for (std::size_t track = 0; track < sketch.tracks.size(); ++track)
        json["tracks"].push_back(trackJson(subject, track, sketch.tracks[track]));
    for (const TimelineMarker& marker : timeline.markers)
        json["markers"].push_back({{"name", printed(marker.name)}, {"at", marker.at.number()}});
    if (subject.course == nullptr)
        return json;
    json["wave"] = waveJson(*subject.course);
    if (subject.course->hasLoudness())
        json["loudness"] = loudnessJson(*subject.course);
    json["loudnessFailure"] = subject.course->loudnessFailure();
    return json;
}

} // namespace audlmd::command
