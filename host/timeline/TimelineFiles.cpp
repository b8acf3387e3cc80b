#include "host/timeline/TimelineFiles.hpp"

#include "host/signal/GainLaws.hpp"
#include "host/timeline/JsonReader.hpp"
#include "host/timeline/OtioReader.hpp"
#include "host/timeline/TimelineError.hpp"
#include "host/words/StripWords.hpp"
#include "host/words/Times.hpp"

#include <cmath>
#include <vector>

namespace audlmd::timeline {
namespace {

/// JSON has no infinity.
Json decibels(double value) {
    return std::isinf(value) ? Json("-inf") : Json(value);
}

Json fade(std::uint64_t samples, FadeCurve curve) {
    return {{"length", samples}, {"curve", words::wordOf(words::curveWords, curve)}};
}

Json equaliser(const std::vector<EqualiserBand>& bands) {
    Json list = Json::array();
    for (const EqualiserBand& band : bands)
        list.push_back({{"kind", words::wordOf(words::bandWords, band.kind)},
                        {"frequency", band.frequency},
                        {"gain", band.gainDb},
                        {"q", band.q}});
    return list;
}

/// A level is written in decibels, as a user reads levels; reading turns them into u-values again.
Json automation(const AutomationWalk& walk) {
    Json points = Json::array();
    for (const LevelNode& node : walk.automation.nodes())
        points.push_back(Json::array(
            {node.position, decibels(decibelsOfGain(mixerStyleGain(static_cast<double>(node.uValue))))}));
    return {{"points", points}, {"reverse", walk.direction == DynamicLevelDirection::reverse}};
}

/// Defaults are written out, so that a reader of the file need not know them.
Json stripOf(const TimelineStrip& strip) {
    const StripSettings& settings = strip.settings;
    Json value{{"name", strip.name},
               {"media", strip.media},
               {"at", strip.at.number()},
               {"length", std::int64_t{strip.length}},
               {"skip", strip.skip.number()},
               {"from", settings.from.number()},
               {"to", settings.to.number()},
               {"reverse", settings.reverse},
               {"speed", settings.speed},
               {"converter", words::wordOf(words::converterWords, settings.converter)},
               {"gain", decibels(strip.gainDb)},
               {"fadeIn", fade(settings.fade.fadeInSamples, settings.fade.fadeInCurve)},
               {"fadeOut", fade(settings.fade.fadeOutSamples, settings.fade.fadeOutCurve)},
               {"equaliser", equaliser(settings.equaliser)}};
    if (settings.automation)
        value["automation"] = automation(*settings.automation);
    if (!strip.layout.empty())
        value["layout"] = nameOf(strip.layout);
    if (strip.relabel != Relabel())
        value["relabel"] = words::relabelText(strip.relabel);
    if (!strip.silence.empty())
        value["silence"] = strip.silence;
    if (strip.routing)
        value["routing"] = strip.routing->rows;
    if (strip.pan != 0.0)
        value["pan"] = strip.pan;
    return value;
}

} // namespace

bool mayBeTimeline(std::string_view start) {
    return startOfJson(start) != std::string_view::npos;
}

Timeline readTimeline(std::string_view text, const ReadOptions& options) {
    const Json root = parseJson(text);
    if (member(root, "OTIO_SCHEMA") != nullptr)
        return readOtio(root, options);
    if (member(root, "audlmd") != nullptr)
        return readJson(root, options);
    throw TimelineError(
        "this is no timeline: there is neither an OTIO_SCHEMA, as in OpenTimelineIO (.otio), nor "
        "the key \"audlmd\", as in our own JSON");
}

std::string writeJson(const Timeline& timeline) {
    Json root{{"audlmd", 1},
              {"name", timeline.name},
              {"sampleRate", timeline.sampleRate},
              {"channels", timeline.channels},
              {"length", std::int64_t{timeline.length}},
              {"timeReference", timeline.timeReference},
              {"tracks", Json::array()},
              {"markers", Json::array()},
              {"notes", Json::array()}};
    if (timeline.frameRate != 0.0)
        root["frameRate"] = timeline.frameRate;
    for (const TimelineTrack& track : timeline.tracks) {
        Json strips = Json::array();
        for (const TimelineStrip& strip : track.strips)
            strips.push_back(stripOf(strip));
        root["tracks"].push_back({{"name", track.name}, {"strips", strips}});
    }
    for (const TimelineMarker& marker : timeline.markers)
        root["markers"].push_back({{"name", marker.name}, {"at", marker.at.number()}});
    for (const TimelineNote& note : timeline.notes) {
        root["notes"].push_back({{"where", note.where}, {"text", note.text}, {"silences", note.silences}});
        if (note.at)
            root["notes"].back()["at"] = note.at->number();
    }
    return root.dump(2, ' ', false, Json::error_handler_t::replace);
}

} // namespace audlmd::timeline
