#include "tools/timeline/OtioSound.hpp"

#include "tools/timeline/OtioSchema.hpp"

#include <algorithm>
#include <stdexcept>

namespace audlmd::timeline {
namespace {

/// The magnitude of the factor is a speed, the sign a direction. Two reversals cancel.
void readTimeWarp(const Json& effect, const Where& where, ItemSound& sound) {
    const Json* scalar = member(effect, "time_scalar");
    if (scalar == nullptr || !scalar->is_number())
        where.fail("a LinearTimeWarp has no number \"time_scalar\"");
    const double factor = scalar->get<double>();
    if (factor == 0.0) {
        sound.silence = "a time warp of 0 holds one instant, which has no sound";
        return;
    }
    try {
        sound.speed = sound.speed * magnitude(Rational::nearest(factor));
    } catch (const std::overflow_error&) {
        where.fail("a time warp of " + scalar->dump() + " is no speed that can be played");
    }
    sound.reverse = sound.reverse != (factor < 0.0);
}

std::string nameOfEffect(const Json& effect) {
    const std::string name = textIn(effect, "name");
    return printable(name.empty() ? textIn(effect, "effect_name", "without a name") : name);
}

void readEffect(const Json& effect, const Rational& frameRate, const Where& where, const OtioContext& context,
                ItemSound& sound) {
    const std::string schema = schemaOf(effect, where);
    const Json* enabled = member(effect, "enabled");
    if (enabled != nullptr && *enabled == false)
        return;
    if (schema == "LinearTimeWarp")
        readTimeWarp(effect, where, sound);
    else if (schema == "FreezeFrame")
        sound.silence = "a frozen frame has no sound";
    else if (schema == "TimeEffect")
        where.fail("the effect '" + nameOfEffect(effect) +
                   "' changes the speed over time; only constant speeds can be played");
    else if (schema == "Effect")
        readExportedParameters(effect, frameRate, where, context, sound);
    else
        context.note(where, "the effect '" + nameOfEffect(effect) + "' (" + printable(schema) +
                                ") is not known and not played");
}

/// Exporters write the word with a capital or without; only the letters of ASCII are lowered, in any locale.
FadeCurve curveNamed(std::string name, FadeCurve otherwise) {
    std::transform(name.begin(), name.end(), name.begin(),
                   [](char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c; });
    for (const auto& [word, curve] : curveWords)
        if (word == name)
            return curve;
    return otherwise;
}

} // namespace

void readSound(const Json& item, const Rational& frameRate, const Where& where, const OtioContext& context,
               ItemSound& sound) {
    if (const Json* effects = member(item, "effects"); effects != nullptr && effects->is_array())
        for (const Json& effect : *effects)
            readEffect(effect, frameRate, where, context, sound);
    // After the effects, because our own block has the last word.
    readOwnBlock(item, where, context, sound);
}

FadeCurve curveIn(const Json& item, FadeCurve otherwise) {
    if (const Json* metadata = member(item, "metadata"); metadata != nullptr && metadata->is_object())
        for (const auto& [name, block] : metadata->items())
            if (const std::string curve = textIn(block, "curve"); !curve.empty())
                return curveNamed(curve, otherwise);
    return otherwise;
}

} // namespace audlmd::timeline
