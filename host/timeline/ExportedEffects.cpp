#include "host/timeline/ExportedEffects.hpp"

#include "host/timeline/DecibelLine.hpp"
#include "host/words/Numbers.hpp"
#include "host/words/Text.hpp"

#include <algorithm>
#include <array>
#include <initializer_list>
#include <limits>
#include <stdexcept>

namespace audlmd::timeline {
namespace {

/// The effect of this "Type" switches the equaliser of its clip on and off. The bands are effects of their
/// own.
constexpr int equaliserSwitch = 64;

/// Where the bands lie that are not moved.
constexpr std::array usualFrequencies = {97.0, 117.0, 239.0, 1200.0, 6000.0, 19000.0};

double numberIn(const Json& value, const std::string& name, double lowest, double highest,
                const Reading& reading) {
    const double number = value.is_number() ? value.get<double>() : std::numeric_limits<double>::quiet_NaN();
    if (!(number >= lowest && number <= highest))
        reading.fail("\"" + name + "\" is not a number from " + words::numberText(lowest) + " to " +
                     words::numberText(highest));
    return number;
}

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

std::string nameOf(const Json& effect, const Json& block) {
    return firstText({textIn(effect, "name"), textIn(block, "DisplayName"), textIn(block, "Effect Name"),
                      textIn(effect, "effect_name"), textIn(block, "MatchName")});
}

} // namespace

void ExportedEffects::read(const Json& effect) {
    bool understood = false;
    if (const Json* metadata = member(effect, "metadata"); metadata != nullptr && metadata->is_object())
        for (const auto& [space, block] : metadata->items()) {
            const Json* parameters = member(block, "Parameters");
            if (parameters == nullptr || !parameters->is_array())
                continue;
            understood = true;
            const bool isOn = !isOff(block, *parameters);
            if (const Json* type = member(block, "Type"); type != nullptr && *type == equaliserSwitch)
                equaliserIsOn_ = isOn;
            if (isOn)
                readBlock(effect, block, *parameters);
        }
    if (!understood)
        item_.note("the effect '" + nameOf(effect, Json()) + "' is not known and not played");
}

void ExportedEffects::finish() {
    if (!equaliserIsOn_)
        return;
    for (const ExportedBand& band : bands_) {
        if (!band.index) {
            item_.note("a band of the exporter's equaliser has no number and is not played");
            continue;
        }
        if (band.gainDb != 0.0)
            item_.sound.equaliser.push_back({BandKind::peak,
                                             band.frequency.value_or(usualFrequencies.at(*band.index)),
                                             band.gainDb, band.q});
        if (*band.index < 2 || *band.index > 3)
            item_.note("band " + std::to_string(*band.index) + " of the exporter's equaliser is " +
                       (band.gainDb == 0.0 ? "not played" : "played as a peak") +
                       ", because its shape is not in the file");
    }
}

void ExportedEffects::readBlock(const Json& effect, const Json& block, const Json& parameters) {
    ExportedBand band;
    for (const Json& parameter : parameters)
        if (!readParameter(parameter, band) && !isIdle(parameter))
            item_.note("the parameter '" +
                       firstText({textIn(parameter, "Parameter ID"), textIn(parameter, "DisplayName"),
                                  textIn(parameter, "MatchName")}) +
                       "' of the effect '" + nameOf(effect, block) + "' is not played");
    if (band.isMoved)
        bands_.push_back(band);
}

bool ExportedEffects::readParameter(const Json& parameter, ExportedBand& band) {
    const std::string name = textIn(parameter, "Parameter ID");
    const Json* value = member(parameter, "Parameter Value");
    const Json* frames = keyFramesOf(parameter);
    ItemSound& sound = item_.sound;
    // A volume that moves replaces the fixed value, which exporters write beside the key frames.
    if (name == "volume" && frames != nullptr && frames->is_object())
        sound.keys = keyFramesIn(*frames, frameRate_, reading_);
    else if (name == "volume" && value != nullptr)
        sound.gainDb += volumeIn(value, reading_);
    else if (name == "faderIn" && value != nullptr)
        sound.fadeIn = secondsIn(*value, name, frameRate_, reading_);
    else if (name == "faderOut" && value != nullptr)
        sound.fadeOut = secondsIn(*value, name, frameRate_, reading_);
    else if (value == nullptr || frames != nullptr)
        return false;
    else if (name == "pan")
        sound.pan = numberIn(*value, name, -100.0, 100.0, reading_);
    else
        return readBand(name, *value, isIdle(parameter), band);
    return true;
}

bool ExportedEffects::readBand(const std::string& name, const Json& value, bool isIdle, ExportedBand& band) {
    if (name == "eq band index") {
        const double index = numberIn(value, name, -1.0, 5.0, reading_);
        band.index = index < 0.0 ? std::nullopt : std::optional(static_cast<std::size_t>(index));
    } else if (name == "eq frequency")
        band.frequency = numberIn(value, name, 1.0, 1e6, reading_);
    else if (name == "eq dB gain")
        band.gainDb = numberIn(value, name, -1000.0, 1000.0, reading_) / 10.0;
    else if (name == "eq qFactor")
        band.q = numberIn(value, name, 1.0, 1e6, reading_) / 1000.0;
    else
        return false;
    band.isMoved |= name != "eq band index" && !isIdle;
    return true;
}

} // namespace audlmd::timeline
