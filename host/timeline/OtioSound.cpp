#include "host/timeline/OtioSound.hpp"

#include "host/signal/GainLaws.hpp"
#include "host/timeline/ExportedEffects.hpp"
#include "host/timeline/OtioSchema.hpp"
#include "host/timeline/StrictObject.hpp"
#include "host/timeline/StripCheck.hpp"
#include "host/timeline/TimelineError.hpp"
#include "host/words/Numbers.hpp"
#include "host/words/StripWords.hpp"
#include "host/words/Text.hpp"

#include <algorithm>
#include <cmath>
#include <initializer_list>
#include <limits>
#include <stdexcept>

namespace audlmd::timeline {
namespace {

/// The magnitude of the factor is a speed, the sign a direction. Two reversals cancel.
void readTimeWarp(const Json& effect, const Reading& reading, OtioItem& item) {
    const Json* scalar = member(effect, "time_scalar");
    if (scalar == nullptr || !scalar->is_number())
        reading.fail("a LinearTimeWarp has no number \"time_scalar\"");
    const double factor = scalar->get<double>();
    if (factor == 0.0)
        return item.beSilent("a time warp of 0 holds one instant, which has no sound", false);
    ItemSound& sound = item.sound;
    try {
        sound.speed = sound.speed * magnitude(Rational::nearest(factor));
    } catch (const std::overflow_error&) {
        reading.fail("a time warp of " + scalar->dump() + " is no speed that can be played");
    }
    sound.reverse = sound.reverse != (factor < 0.0);
}

std::string nameOfEffect(const Json& effect) {
    const std::string name = textIn(effect, "name");
    return words::printable(name.empty() ? textIn(effect, "effect_name", "without a name") : name);
}

/// A speed that changes over time. The clip keeps its place and its length.
void readSpeedRamp(const Json& effect, const Reading& reading, OtioItem& item) {
    const Json* scalar = member(effect, "time_scalar");
    const bool hasSpeed = scalar != nullptr && scalar->is_number();
    if (hasSpeed)
        readTimeWarp(effect, reading, item);
    item.note("the effect '" + nameOfEffect(effect) +
                  "' changes the speed over time, which is not played; at " +
                  (hasSpeed ? "the constant speed " + scalar->dump() : "normal speed") + " instead",
              true);
}

void readEffect(const Json& effect, ExportedEffects& exported, const Reading& reading, OtioItem& item) {
    const std::string schema = schemaOf(effect, reading);
    if (const Json* enabled = member(effect, "enabled"); enabled != nullptr && !enabled->is_boolean())
        reading.fail("\"enabled\" of the effect '" + nameOfEffect(effect) + "' is not true or false");
    else if (enabled != nullptr && *enabled == false)
        return;
    if (schema == "LinearTimeWarp")
        readTimeWarp(effect, reading, item);
    else if (schema == "FreezeFrame")
        item.beSilent("a frozen frame has no sound", false);
    else if (schema == "TimeEffect")
        readSpeedRamp(effect, reading, item);
    else if (schema == "Effect")
        exported.read(effect);
    else
        item.note("the effect '" + nameOfEffect(effect) + "' (" + words::printable(schema) +
                  ") is not known and not played");
}

/// Our own times are seconds, so the rate is 1 frame per second.
std::optional<Rational> secondsIn(StrictObject& fields, const std::string& key) {
    if (fields.find(key) == nullptr)
        return std::nullopt;
    return secondsOf(fields.number(key, 0.0, 0.0, longestSeconds), Rational(1));
}

/// Times may be negative: a transition can make the clip start earlier. Nodes at the same time make a jump.
std::vector<TimedDecibels> keyFramesIn(StrictObject& fields) {
    std::vector<TimedDecibels> keys;
    const Json* list = fields.list("automation");
    if (list == nullptr)
        return keys;
    for (const Json& point : *list) {
        const bool isPair = point.is_array() && point.size() == 2 && point[0].is_number() &&
                            std::abs(point[0].get<double>()) <= longestSeconds;
        const std::optional<double> decibels = isPair ? decibelsOf(point[1], 60.0) : std::nullopt;
        if (!decibels)
            fields.fail("automation", "must be a list of [seconds, decibels]");
        keys.push_back({secondsOf(point[0].get<double>(), Rational(1)), *decibels});
        if (keys.size() > 1 && keys.back().time < keys[keys.size() - 2].time)
            fields.fail("automation", "must be in order of time");
    }
    return keys;
}

/// The block "audlmd" in an item's metadata, or null.
const Json* ownBlockOf(const Json& item) {
    const Json* metadata = member(item, "metadata");
    return metadata == nullptr ? nullptr : member(*metadata, "audlmd");
}

/// The item's own block, if there is one. Gains of effects are already in the sum, and
/// stay there.
void readOwnBlock(const Json& item, const Reading& reading, ItemSound& sound) {
    const Json* block = ownBlockOf(item);
    if (block == nullptr)
        return;
    StrictObject fields(*block, reading);
    sound.gainDb += fields.decibels("gain", 0.0, highestGainDb);
    sound.gainDb += fields.decibels("level", 0.0, faderTopDecibels);
    if (const std::optional<Rational> fadeIn = secondsIn(fields, "fadeIn"))
        sound.fadeIn = fadeIn;
    if (const std::optional<Rational> fadeOut = secondsIn(fields, "fadeOut"))
        sound.fadeOut = fadeOut;
    sound.fadeInCurve = fields.word("fadeInCurve", words::curveWords).value_or(sound.fadeInCurve);
    sound.fadeOutCurve = fields.word("fadeOutCurve", words::curveWords).value_or(sound.fadeOutCurve);
    if (std::vector<TimedDecibels> keys = keyFramesIn(fields); !keys.empty())
        sound.keys = std::move(keys);
    if (fields.find("equaliser") != nullptr)
        sound.equaliser = equaliserIn(fields);
    sound.pan = fields.number("pan", sound.pan, -100.0, 100.0);
    sound.converter = fields.word("converter", words::converterWords);
    sound.routing = routingIn(fields);
    sound.relabel = relabelIn(fields);
    fields.finish();
}

} // namespace

void readSound(const Json& value, const Rational& frameRate, const Reading& reading, OtioItem& item) {
    ExportedEffects exported(frameRate, reading, item);
    if (const Json* effects = member(value, "effects"))
        for (const Json& effect : *effects)
            readEffect(effect, exported, reading, item);
    exported.finish();
    // After the effects, because our own block has the last word.
    readOwnBlock(value, reading, item.sound);
}

Relabel relabelOf(const Json& clip, const Reading& reading) {
    const Json* block = ownBlockOf(clip);
    if (block == nullptr)
        return {};
    StrictObject fields(*block, reading);
    return relabelIn(fields);
}

FadeCurve curveIn(const Json& item, FadeCurve otherwise) {
    if (const Json* metadata = member(item, "metadata"); metadata != nullptr && metadata->is_object())
        for (const auto& [name, block] : metadata->items())
            if (const std::string curve = textIn(block, "curve"); !curve.empty())
                // Exporters write the word with a capital or without.
                return words::valueOf(words::curveWords, words::lowered(curve)).value_or(otherwise);
    return otherwise;
}

} // namespace audlmd::timeline
