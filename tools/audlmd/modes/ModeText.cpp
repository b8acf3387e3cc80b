#include "tools/audlmd/modes/ModeText.hpp"

#include "loop_modes/RegistrationOrder.hpp"

#include <algorithm>
#include <array>
#include <iomanip>
#include <iterator>
#include <sstream>
#include <string_view>
#include <vector>

namespace audlmd::command {
namespace {

using Aud::Render::ConversionStage;
using Aud::Render::Direction;
using Aud::Render::DynamicLevelDirection;
using Aud::Render::EnvelopeKind;
using Aud::Render::FilterStage;
using Aud::Render::LevelStage;
using Aud::Render::MiddleLevelKind;
using Aud::Render::ModeFields;

// The names of each field's values, in the order of the values.
constexpr std::array<std::string_view, 2> directions{"backwards", "forwards"};
constexpr std::array<std::string_view, 3> levels{"no outer level", "automated level", "fixed outer level"};
constexpr std::array<std::string_view, 2> filters{"no filter", "five-band equaliser"};
constexpr std::array<std::string_view, 3> conversions{"no conversion", "linear interpolation",
                                                      "band-limited resampling"};
constexpr std::array<std::string_view, 6> envelopes{"no envelope",
                                                    "simple ramp on the log curve",
                                                    "simple ramp on the constant-power curve",
                                                    "ramp, then hold",
                                                    "hold, then ramp",
                                                    "ramp, hold, ramp"};
/// The traits in the chain's type, for each EnvelopeKind.
constexpr std::array<std::string_view, 6> envelopeTraits{"",         "SimpleRamp<2>", "SimpleRamp<3>",
                                                         "RampHold", "HoldRamp",      "RampHoldRamp"};

/// A field of two bits may hold 3, which has no name.
template <std::size_t Size>
std::string_view nameIn(const std::array<std::string_view, Size>& names, auto field) {
    const auto value = static_cast<std::size_t>(field);
    return value < Size ? names[value] : "not valid";
}

std::string envelopeText(unsigned int stageNumber) {
    if (stageNumber >= Aud::Render::envelopeStages.size())
        return "not valid";
    const Aud::Render::EnvelopeStage stage = Aud::Render::envelopeStages[stageNumber];
    std::string text(envelopes[static_cast<std::size_t>(stage.envelope)]);
    text += stage.middleLevel == MiddleLevelKind::fixed ? ", with a middle level" : ", no middle level";
    return text;
}

std::string_view levelLayer(const ModeFields& fields) {
    if (fields.levelStage == LevelStage::fixed)
        return "FixedLevelApplyingIterator";
    if (fields.levelStage == LevelStage::none)
        return "NullIterator";
    return fields.dynamicLevelDirection == DynamicLevelDirection::forwards
               ? "DynamicLevelControl::ForwardsDynamicLevelApplyingIterator"
               : "DynamicLevelControl::ReverseDynamicLevelApplyingIterator";
}

/// The layers of a code's chain, outermost first, down to the source.
std::vector<std::string> chainLayers(unsigned long code) {
    const ModeFields fields = Aud::Render::decodeModeCode(code);
    const Aud::Render::EnvelopeStage stage = Aud::Render::envelopeStages[fields.envelopeStage];
    std::vector<std::string> layers;
    if (fields.srcStage != ConversionStage::none)
        layers.emplace_back(fields.srcStage == ConversionStage::linear ? "LinearSRCIterator"
                                                                       : "FilteringSRCIterator");
    layers.emplace_back(levelLayer(fields));
    if (stage.middleLevel != MiddleLevelKind::absent)
        layers.emplace_back(stage.middleLevel == MiddleLevelKind::fixed ? "FixedLevelApplyingIterator"
                                                                        : "NullIterator");
    if (stage.envelope != EnvelopeKind::none)
        layers.push_back("EnvelopeApplyingIterator, EnvelopeTraits::" +
                         std::string(envelopeTraits[static_cast<std::size_t>(stage.envelope)]));
    layers.emplace_back(fields.filterStage == FilterStage::equaliser ? "MultiBandBiquadApplyingIterator"
                                                                     : "NullIterator");
    layers.emplace_back(fields.direction == Direction::forward ? "SampleCache::ForwardIterator"
                                                               : "SampleCache::ReverseIterator");
    return layers;
}

} // namespace

std::string chainType(unsigned long code) {
    const std::vector<std::string> layers = chainLayers(code);
    std::string type = layers.back();
    for (auto layer = std::next(layers.rbegin()); layer != layers.rend(); ++layer) {
        // The text of an envelope holds its shape, which is the template argument after the inner layer.
        const std::size_t comma = layer->find(',');
        const std::string shape = comma == std::string::npos ? "" : layer->substr(comma);
        type.insert(0, layer->substr(0, comma) + '<');
        type.append(shape).append(">");
    }
    return type;
}

std::string describeFields(const ModeFields& fields) {
    std::ostringstream text;
    const auto row = [&text](const char* bits, const char* field, auto value, std::string_view meaning) {
        text << "  " << std::left << std::setw(10) << bits << std::setw(23) << field << std::setw(4)
             << static_cast<unsigned int>(value) << meaning << '\n';
    };
    row("bit 10", "direction", fields.direction, nameIn(directions, fields.direction));
    row("bits 8-9", "levelStage", fields.levelStage, nameIn(levels, fields.levelStage));
    row("bit 7", "filterStage", fields.filterStage, nameIn(filters, fields.filterStage));
    row("bits 5-6", "srcStage", fields.srcStage, nameIn(conversions, fields.srcStage));
    row("bits 1-4", "envelopeStage", fields.envelopeStage, envelopeText(fields.envelopeStage));
    row("bit 0", "dynamicLevelDirection", fields.dynamicLevelDirection,
        fields.levelStage == LevelStage::dynamic ? nameIn(directions, fields.dynamicLevelDirection)
                                                 : "without effect: the level is not automated");
    return text.str();
}

std::size_t registrationPlace(unsigned long code) {
    const auto& order = Aud::Render::registrationOrder;
    return static_cast<std::size_t>(std::ranges::find(order, code) - order.begin());
}

std::string explain(const StripPlayer& player, FormatId format, bool summing) {
    const unsigned long code = player.modeCode();
    std::ostringstream text;
    text << "mode code " << code << " (0x" << std::hex << std::setw(3) << std::setfill('0') << code
         << std::dec << std::setfill(' ') << "), registered as number " << registrationPlace(code) + 1
         << " of " << Aud::Render::validModeCount << '\n'
         << describeFields(Aud::Render::decodeModeCode(code)) << "chain, outermost first\n";
    for (const std::string& layer : chainLayers(code))
        text << "  " << layer << '\n';
    if (player.fullLevelModeCode() != code)
        text << "at full level, without the envelope: mode code " << player.fullLevelModeCode() << '\n';
    text << "output type " << outputTypeIndex(format, summing) + 1 << " of " << Aud::Render::outputTypeCount
         << " in the registration order: " << outputTypeName(format, summing) << '\n'
         << "record\n";
    for (const RecordNumber& number : player.recordNumbers())
        text << "  " << std::left << std::setw(32) << number.name << ' ' << number.value << '\n';
    text << "output length " << player.outputLength() << " samples\n";
    return text.str();
}

} // namespace audlmd::command
