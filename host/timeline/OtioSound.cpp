#include "host/timeline/OtioSound.hpp"

#include "host/timeline/OtioSchema.hpp"

#include <stdexcept>

namespace audlmd::timeline {
namespace {

/// The magnitude of the factor is a speed, the sign a direction. Two reversals cancel.
void readTimeWarp(const Json& effect, const Where& where, OtioItem& item) {
    const Json* scalar = member(effect, "time_scalar");
    if (scalar == nullptr || !scalar->is_number())
        where.fail("a LinearTimeWarp has no number \"time_scalar\"");
    const double factor = scalar->get<double>();
    if (factor == 0.0)
        return item.beSilent("a time warp of 0 holds one instant, which has no sound", false);
    ItemSound& sound = item.sound;
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

void readEffect(const Json& effect, const Rational& frameRate, const Where& where, OtioItem& item) {
    const std::string schema = schemaOf(effect, where);
    if (const Json* enabled = member(effect, "enabled"); enabled != nullptr && !enabled->is_boolean())
        where.fail("\"enabled\" of the effect '" + nameOfEffect(effect) + "' is not true or false");
    else if (enabled != nullptr && *enabled == false)
        return;
    if (schema == "LinearTimeWarp")
        readTimeWarp(effect, where, item);
    else if (schema == "FreezeFrame")
        item.beSilent("a frozen frame has no sound", false);
    else if (schema == "TimeEffect")
        where.fail("the effect '" + nameOfEffect(effect) +
                   "' changes the speed over time; only constant speeds can be played");
    else if (schema == "Effect")
        readExportedParameters(effect, frameRate, where, item);
    else
        item.note("the effect '" + nameOfEffect(effect) + "' (" + printable(schema) +
                  ") is not known and not played");
}

/// Exporters write the word with a capital or without.
FadeCurve curveNamed(const std::string& name, FadeCurve otherwise) {
    for (const auto& [word, curve] : curveWords)
        if (word == lowered(name))
            return curve;
    return otherwise;
}

} // namespace

void readSound(const Json& value, const Rational& frameRate, const Where& where, const OtioContext& context,
               OtioItem& item) {
    if (const Json* effects = member(value, "effects"))
        for (const Json& effect : *effects)
            readEffect(effect, frameRate, where, item);
    // After the effects, because our own block has the last word.
    readOwnBlock(value, where, context, item.sound);
}

FadeCurve curveIn(const Json& item, FadeCurve otherwise) {
    if (const Json* metadata = member(item, "metadata"); metadata != nullptr && metadata->is_object())
        for (const auto& [name, block] : metadata->items())
            if (const std::string curve = textIn(block, "curve"); !curve.empty())
                return curveNamed(curve, otherwise);
    return otherwise;
}

} // namespace audlmd::timeline
