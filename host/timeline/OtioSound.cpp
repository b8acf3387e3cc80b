#include "host/timeline/OtioSound.hpp"

#include "host/signal/GainLaws.hpp"
#include "host/timeline/DecibelLine.hpp"
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

/// Frames as seconds.
Rational secondsIn(const Json& value, const std::string& name, const Rational& frameRate,
                   const Reading& reading) {
    if (!value.is_number() || value.get<double>() < 0.0)
        reading.fail("\"" + name + "\" is not a number of frames");
    try {
        return secondsOf(value.get<double>(), frameRate);
    } catch (const std::overflow_error& error) {
        reading.fail("\"" + name + "\": " + error.what());
    }
}

/// Limited to +60 dB, like every gain of a strip. The lowest level of a fader is silence.
double volumeIn(const Json* value, const Reading& reading) {
    const std::optional<double> decibels = value == nullptr ? std::nullopt : decibelsOf(*value, 60.0);
    if (!decibels)
        reading.fail("\"volume\" is not in decibels up to 60");
    return *decibels <= silentDecibels ? -std::numeric_limits<double>::infinity() : *decibels;
}

/// The frame numbers are keys of an object, and thus sorted as texts: "10" before "9". Sorting by time puts
/// them in order.
std::vector<TimedDecibels> keyFramesIn(const Json& frames, const Rational& frameRate,
                                       const Reading& reading) {
    std::vector<TimedDecibels> keys;
    for (const auto& [frame, key] : frames.items()) {
        const std::optional<double> number = words::numberIn(frame);
        if (!number || !(*number >= -1e12 && *number <= 1e12))
            reading.fail("the key frame '" + words::printable(frame) +
                         "' of \"volume\" is not a number of frames");
        keys.push_back({secondsOf(*number, frameRate), volumeIn(member(key, "Value"), reading)});
    }
    std::stable_sort(keys.begin(), keys.end(),
                     [](const TimedDecibels& a, const TimedDecibels& b) { return a.time < b.time; });
    return keys;
}

/// The first of the texts that shows anything.
std::string firstText(std::initializer_list<std::string> texts) {
    for (const std::string& text : texts)
        if (text.find_first_not_of(' ') != std::string::npos)
            return words::printable(text);
    return "?";
}

/// What a parameter is set to, in either of the two shapes. Null where it has no value.
const Json* valueOf(const Json& parameter) {
    if (const Json* value = member(parameter, "Parameter Value"))
        return value;
    const Json* start = member(parameter, "StartValue");
    return start == nullptr ? nullptr : member(*start, "Value");
}

/// Key frames of either shape: an object, or a list.
const Json* keyFramesOf(const Json& parameter) {
    for (const char* key : {"Key Frames", "Keyframes"})
        if (const Json* frames = member(parameter, key);
            frames != nullptr && frames->is_structured() && !frames->empty())
            return frames;
    return nullptr;
}

/// Whether leaving the parameter out changes nothing.
bool isIdle(const Json& parameter) {
    const Json* value = valueOf(parameter);
    const Json* usual = member(parameter, "Default Parameter Value");
    return keyFramesOf(parameter) == nullptr && (value == nullptr || (usual != nullptr && *value == *usual));
}

/// A volume that moves replaces the fixed value, which exporters write beside the key frames. Returns whether
/// the parameter is played.
bool readParameter(const Json& parameter, const Rational& frameRate, const Reading& reading,
                   ItemSound& sound) {
    const std::string name = textIn(parameter, "Parameter ID");
    const Json* value = member(parameter, "Parameter Value");
    const Json* frames = keyFramesOf(parameter);
    if (name == "volume" && frames != nullptr && frames->is_object())
        sound.keys = keyFramesIn(*frames, frameRate, reading);
    else if (name == "volume" && value != nullptr)
        sound.gainDb += volumeIn(value, reading);
    else if (name == "faderIn" && value != nullptr)
        sound.fadeIn = secondsIn(*value, name, frameRate, reading);
    else if (name == "faderOut" && value != nullptr)
        sound.fadeOut = secondsIn(*value, name, frameRate, reading);
    else
        return false;
    return true;
}

/// Whether a parameter switches off the effect that it belongs to.
bool switchesOff(const Json& parameter) {
    const std::string name =
        words::lowered(firstText({textIn(parameter, "Parameter ID"), textIn(parameter, "DisplayName")}));
    const Json* value = valueOf(parameter);
    return value != nullptr && ((name == "bypass" && *value == true) ||
                                (name.find("enable") != std::string::npos && *value == false));
}

/// A block without the word is on.
bool isOff(const Json& block, const Json& parameters) {
    const Json* enabled = member(block, "Enabled");
    return (enabled != nullptr && *enabled == false) || std::ranges::any_of(parameters, switchesOff);
}

/// The parameters that exporters keep in the metadata of an effect, under any namespace: a list
/// "Parameters" of objects with a "Parameter ID", a "Parameter Value" and "Key Frames".
///
///     volume    decibels, and key frames: {"12": {"Value": -6.0}}, in frames from the start of the item
///     faderIn   frames
///     faderOut  frames
///
/// Other parameters become notes, unless they have no value or their "Default Parameter Value". Other
/// programs write a "DisplayName", and the value in a "StartValue" and a list "Keyframes". Effects and
/// namespaces count for nothing that are not "Enabled", and those that a parameter of theirs switches off:
/// a "Bypass" that is true, or one to "enable" that is false.
void readExportedParameters(const Json& effect, const Rational& frameRate, const Reading& reading,
                            OtioItem& item) {
    const auto nameIn = [&](const Json& block) {
        return firstText({textIn(effect, "name"), textIn(block, "DisplayName"), textIn(block, "Effect Name"),
                          textIn(effect, "effect_name"), textIn(block, "MatchName")});
    };
    bool understood = false;
    if (const Json* metadata = member(effect, "metadata"); metadata != nullptr && metadata->is_object())
        for (const auto& [space, block] : metadata->items()) {
            const Json* parameters = member(block, "Parameters");
            if (parameters == nullptr || !parameters->is_array())
                continue;
            understood = true;
            if (isOff(block, *parameters))
                continue;
            for (const Json& parameter : *parameters)
                if (!readParameter(parameter, frameRate, reading, item.sound) && !isIdle(parameter))
                    item.note("the parameter '" +
                              firstText({textIn(parameter, "Parameter ID"), textIn(parameter, "DisplayName"),
                                         textIn(parameter, "MatchName")}) +
                              "' of the effect '" + nameIn(block) + "' is not played");
        }
    if (!understood)
        item.note("the effect '" + nameIn(Json()) + "' is not known and not played");
}

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

void readEffect(const Json& effect, const Rational& frameRate, const Reading& reading, OtioItem& item) {
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
        readExportedParameters(effect, frameRate, reading, item);
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
    sound.equaliser = equaliserIn(fields);
    sound.converter = fields.word("converter", words::converterWords);
    sound.routing = routingIn(fields);
    sound.relabel = relabelIn(fields);
    fields.finish();
}

} // namespace

void readSound(const Json& value, const Rational& frameRate, const Reading& reading, OtioItem& item) {
    if (const Json* effects = member(value, "effects"))
        for (const Json& effect : *effects)
            readEffect(effect, frameRate, reading, item);
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
