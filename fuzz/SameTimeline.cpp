#include "fuzz/SameTimeline.hpp"

#include <nlohmann/json.hpp>

#include <algorithm>
#include <cmath>

namespace audlmd::fuzz {
namespace {

/// As JSON has it: bytes that are no UTF-8 are replaced.
std::string written(const std::string& text) {
    return nlohmann::json(text).dump(-1, ' ', false, nlohmann::json::error_handler_t::replace);
}

bool areSame(const std::optional<AutomationWalk>& a, const std::optional<AutomationWalk>& b) {
    // A level is written in decibels, and rounded there.
    const auto same = [](const LevelNode& x, const LevelNode& y) {
        const float u = std::clamp(x.uValue, 0.0F, 1.5F);
        return x.position == y.position && std::fabs(u - std::clamp(y.uValue, 0.0F, 1.5F)) <= 1e-5F;
    };
    return a.has_value() == b.has_value() &&
           (!a || (a->direction == b->direction &&
                   std::ranges::equal(a->automation.nodes(), b->automation.nodes(), same)));
}

bool areSame(const StripSettings& a, const StripSettings& b) {
    const auto sameBand = [](const EqualiserBand& x, const EqualiserBand& y) {
        return x.kind == y.kind && x.frequency == y.frequency && x.gainDb == y.gainDb && x.q == y.q;
    };
    return a.from == b.from && a.to == b.to && a.reverse == b.reverse && a.speed == b.speed &&
           a.converter == b.converter && a.fade.fadeInSamples == b.fade.fadeInSamples &&
           a.fade.fadeOutSamples == b.fade.fadeOutSamples && a.fade.fadeInCurve == b.fade.fadeInCurve &&
           a.fade.fadeOutCurve == b.fade.fadeOutCurve &&
           std::ranges::equal(a.equaliser, b.equaliser, sameBand) && areSame(a.automation, b.automation);
}

bool areSame(const TimelineStrip& a, const TimelineStrip& b) {
    return written(a.name) == written(b.name) && written(a.media) == written(b.media) &&
           written(a.silence) == written(b.silence) && a.at == b.at && a.length == b.length &&
           a.relabel == b.relabel && nameOf(a.layout) == nameOf(b.layout) && a.skip == b.skip &&
           a.gainDb == b.gainDb && a.pan == b.pan && a.routing.has_value() == b.routing.has_value() &&
           (!a.routing || a.routing->rows == b.routing->rows) && areSame(a.settings, b.settings);
}

} // namespace

bool areSame(const Timeline& a, const Timeline& b) {
    const auto sameTrack = [](const TimelineTrack& x, const TimelineTrack& y) {
        return written(x.name) == written(y.name) &&
               std::ranges::equal(x.strips, y.strips,
                                  [](const auto& s, const auto& t) { return areSame(s, t); });
    };
    const auto sameMarker = [](const TimelineMarker& x, const TimelineMarker& y) {
        return written(x.name) == written(y.name) && x.at == y.at;
    };
    return written(a.name) == written(b.name) && a.sampleRate == b.sampleRate && a.channels == b.channels &&
           a.length == b.length && a.timeReference == b.timeReference && a.frameRate == b.frameRate &&
           std::ranges::equal(a.tracks, b.tracks, sameTrack) &&
           std::ranges::equal(a.markers, b.markers, sameMarker);
}

} // namespace audlmd::fuzz
