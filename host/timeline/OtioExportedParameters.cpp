#include "host/timeline/DecibelLine.hpp"
#include "host/timeline/OtioSchema.hpp"
#include "host/timeline/OtioSound.hpp"
#include "host/timeline/Rational.hpp"

#include <algorithm>
#include <charconv>
#include <initializer_list>
#include <limits>
#include <stdexcept>

namespace audlmd::timeline {
namespace {

/// Frames as seconds.
Rational secondsIn(const Json& value, const std::string& name, const Rational& frameRate,
                   const Where& where) {
    if (!value.is_number() || value.get<double>() < 0.0)
        where.fail("\"" + name + "\" is not a number of frames");
    try {
        return secondsOf(value.get<double>(), frameRate);
    } catch (const std::overflow_error& error) {
        where.fail("\"" + name + "\": " + error.what());
    }
}

/// Limited to +60 dB, like every gain of a strip. The lowest level of a fader is silence.
double volumeIn(const Json* value, const Where& where) {
    const std::optional<double> decibels = value == nullptr ? std::nullopt : decibelsOf(*value, 60.0);
    if (!decibels)
        where.fail("\"volume\" is not in decibels up to 60");
    return *decibels <= silentDecibels ? -std::numeric_limits<double>::infinity() : *decibels;
}

/// The frame numbers are keys of an object, and thus sorted as texts: "10" before "9". Sorting by time puts
/// them in order.
std::vector<TimedDecibels> keyFramesIn(const Json& frames, const Rational& frameRate, const Where& where) {
    std::vector<TimedDecibels> keys;
    for (const auto& [frame, key] : frames.items()) {
        double number = 0.0;
        const char* end = frame.data() + frame.size();
        const auto [stop, error] = std::from_chars(frame.data(), end, number);
        if (error != std::errc() || stop != end || !(number >= -1e12 && number <= 1e12))
            where.fail("the key frame '" + printable(frame) + "' of \"volume\" is not a number of frames");
        keys.push_back({secondsOf(number, frameRate), volumeIn(member(key, "Value"), where)});
    }
    std::stable_sort(keys.begin(), keys.end(),
                     [](const TimedDecibels& a, const TimedDecibels& b) { return a.time < b.time; });
    return keys;
}

/// The first of the texts that shows anything.
std::string firstText(std::initializer_list<std::string> texts) {
    for (const std::string& text : texts)
        if (text.find_first_not_of(' ') != std::string::npos)
            return printable(text);
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
bool readParameter(const Json& parameter, const Rational& frameRate, const Where& where, ItemSound& sound) {
    const std::string name = textIn(parameter, "Parameter ID");
    const Json* value = member(parameter, "Parameter Value");
    const Json* frames = keyFramesOf(parameter);
    if (name == "volume" && frames != nullptr && frames->is_object())
        sound.keys = keyFramesIn(*frames, frameRate, where);
    else if (name == "volume" && value != nullptr)
        sound.gainDb += volumeIn(value, where);
    else if (name == "faderIn" && value != nullptr)
        sound.fadeIn = secondsIn(*value, name, frameRate, where);
    else if (name == "faderOut" && value != nullptr)
        sound.fadeOut = secondsIn(*value, name, frameRate, where);
    else
        return false;
    return true;
}

/// Whether a parameter switches off the effect that it belongs to.
bool switchesOff(const Json& parameter) {
    const std::string name =
        lowered(firstText({textIn(parameter, "Parameter ID"), textIn(parameter, "DisplayName")}));
    const Json* value = valueOf(parameter);
    return value != nullptr && ((name == "bypass" && *value == true) ||
                                (name.find("enable") != std::string::npos && *value == false));
}

/// A block without the word is on.
bool isOff(const Json& block, const Json& parameters) {
    const Json* enabled = member(block, "Enabled");
    return (enabled != nullptr && *enabled == false) || std::ranges::any_of(parameters, switchesOff);
}

} // namespace

void readExportedParameters(const Json& effect, const Rational& frameRate, const Where& where,
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
                if (!readParameter(parameter, frameRate, where, item.sound) && !isIdle(parameter))
                    item.note("the parameter '" +
                              firstText({textIn(parameter, "Parameter ID"), textIn(parameter, "DisplayName"),
                                         textIn(parameter, "MatchName")}) +
                              "' of the effect '" + nameIn(block) + "' is not played");
        }
    if (!understood)
        item.note("the effect '" + nameIn(Json()) + "' is not known and not played");
}

} // namespace audlmd::timeline
