#include "tools/timeline/OtioSound.hpp"
#include "tools/timeline/Rational.hpp"

#include <algorithm>
#include <charconv>
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

/// Limited to +60 dB, like every gain of a strip.
double volumeIn(const Json* value, const Where& where) {
    const std::optional<double> decibels = value == nullptr ? std::nullopt : decibelsOf(*value, 60.0);
    if (!decibels)
        where.fail("\"volume\" is not in decibels up to 60");
    return *decibels;
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

/// A volume that moves replaces the fixed value, which exporters write beside the key frames.
void readParameter(const Json& parameter, const Rational& frameRate, const Where& where,
                   const OtioContext& context, ItemSound& sound) {
    const std::string name = textIn(parameter, "Parameter ID");
    const Json* value = member(parameter, "Parameter Value");
    const Json* frames = member(parameter, "Key Frames");
    const bool moves = frames != nullptr && frames->is_object() && !frames->empty();
    if (name == "volume" && moves)
        sound.keys = keyFramesIn(*frames, frameRate, where);
    else if (name == "volume" && value != nullptr)
        sound.gainDb += volumeIn(value, where);
    else if (name == "faderIn" && value != nullptr)
        sound.fadeIn = secondsIn(*value, name, frameRate, where);
    else if (name == "faderOut" && value != nullptr)
        sound.fadeOut = secondsIn(*value, name, frameRate, where);
    else
        context.note(where, "the parameter '" + printable(name) + "' of an effect is not played");
}

/// A block without the word is on.
bool isOff(const Json& block) {
    const Json* enabled = member(block, "Enabled");
    return enabled != nullptr && *enabled == false;
}

} // namespace

void readExportedParameters(const Json& effect, const Rational& frameRate, const Where& where,
                            const OtioContext& context, ItemSound& sound) {
    bool understood = false;
    if (const Json* metadata = member(effect, "metadata"); metadata != nullptr && metadata->is_object())
        for (const auto& [space, block] : metadata->items()) {
            const Json* parameters = member(block, "Parameters");
            if (parameters == nullptr || !parameters->is_array())
                continue;
            understood = true;
            if (!isOff(block))
                for (const Json& parameter : *parameters)
                    readParameter(parameter, frameRate, where, context, sound);
        }
    if (!understood)
        context.note(where, "the effect '" +
                                printable(textIn(effect, "effect_name", textIn(effect, "name", "?"))) +
                                "' is not known and not played");
}

} // namespace audlmd::timeline
