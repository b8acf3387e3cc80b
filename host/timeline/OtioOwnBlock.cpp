#include "host/signal/GainLaws.hpp"
#include "host/timeline/JsonParts.hpp"
#include "host/timeline/OtioSound.hpp"
#include "host/timeline/Rational.hpp"

#include <cmath>

namespace audlmd::timeline {
namespace {

/// Our own times are seconds, so the rate is 1 frame per second.
std::optional<Rational> secondsIn(Fields& fields, const std::string& key) {
    if (fields.find(key) == nullptr)
        return std::nullopt;
    return secondsOf(fields.number(key, 0.0, 0.0, longestSeconds), Rational(1));
}

/// Times may be negative: a transition can make the clip start earlier. Nodes at the same time make a jump.
std::vector<TimedDecibels> automationIn(Fields& fields) {
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

} // namespace

void readOwnBlock(const Json& item, const Where& where, const OtioContext& context, ItemSound& sound) {
    const Json* metadata = member(item, "metadata");
    const Json* block = metadata == nullptr ? nullptr : member(*metadata, "audlmd");
    if (block == nullptr)
        return;
    Fields fields(*block, {where.track, where.clip});
    // Gains of effects are already in the sum, and stay there.
    sound.gainDb += fields.decibels("gain", 0.0, highestGainDb);
    sound.gainDb += fields.decibels("level", 0.0, faderTopDecibels);
    if (const std::optional<Rational> fadeIn = secondsIn(fields, "fadeIn"))
        sound.fadeIn = fadeIn;
    if (const std::optional<Rational> fadeOut = secondsIn(fields, "fadeOut"))
        sound.fadeOut = fadeOut;
    sound.fadeInCurve = fields.word("fadeInCurve", curveWords).value_or(sound.fadeInCurve);
    sound.fadeOutCurve = fields.word("fadeOutCurve", curveWords).value_or(sound.fadeOutCurve);
    if (std::vector<TimedDecibels> keys = automationIn(fields); !keys.empty())
        sound.keys = std::move(keys);
    sound.equaliser = equaliserIn(fields, context.options);
    sound.converter = fields.word("converter", converterWords);
    sound.routing = routingIn(fields, context.options.channels);
    fields.finish();
}

} // namespace audlmd::timeline
