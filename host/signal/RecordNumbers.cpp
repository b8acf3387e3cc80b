#include "host/signal/RecordNumbers.hpp"

#include "host/signal/Fade.hpp"
#include "host/signal/GainLaws.hpp"
#include "loop_modes/ModeCode.hpp"

#include <iomanip>
#include <sstream>
#include <string_view>
#include <utility>

namespace audlmd {
namespace {

using namespace Aud::Render;

/// Collects numbers, with as many digits as a float has.
class List {
public:
    template <class... Parts>
    void add(std::string_view name, const Parts&... parts) {
        std::ostringstream text;
        text << std::setprecision(9);
        (text << ... << parts);
        numbers_.push_back({std::string(name), text.str()});
    }

    /// A u-value of the mixer-style curve, with the gain in decibels.
    void addLevel(std::string_view name, float uValue) {
        std::ostringstream decibels;
        decibels << std::showpos << std::fixed << std::setprecision(2)
                 << decibelsOfGain(mixerStyleGain(static_cast<double>(uValue)));
        add(name, uValue, " (", decibels.str(), " dB)");
    }

    void addPosition(std::string_view name, const Aud::SubSamplePos& position) {
        add(name, position.sample, " + ", position.fraction, "/", Aud::SubSamplePos::fractionsPerSample);
    }

    std::vector<RecordNumber> take() { return std::move(numbers_); }

private:
    std::vector<RecordNumber> numbers_;
};

/// Empty for a number that is no curve.
std::string_view curveName(std::uint32_t curve) {
    switch (static_cast<FadeCurve>(curve)) {
    case FadeCurve::linear:
        return " (linear)";
    case FadeCurve::log:
        return " (log)";
    case FadeCurve::power:
        return " (power)";
    }
    return "";
}

/// The cache reader, whose start position is in another field for each kind of mode.
void addSource(List& list, const IteratorCreationParams& params, const ModeFields& fields) {
    const bool forward = fields.direction == Direction::forward;
    if (fields.srcStage != ConversionStage::filtering)
        // The filtering converter has start positions of its own, one for each direction.
        list.add("startPosition", *params.startPosition);
    else if (forward)
        list.add("forwardFilteringStartPosition", *params.forwardFilteringStartPosition);
    else
        list.add("reverseFilteringStartPosition", *params.reverseFilteringStartPosition);
    list.add("requestFlag", *params.requestFlag ? "true (waits)" : "false (does not wait)");
    if (forward)
        list.add("forwardArgument", *params.forwardArgument);
    list.add("gearing", params.gearing->sourceSamplesPerOutputSample);
}

/// The bands in the order of the cascade, in the names of the transfer function.
void addEqualiser(List& list, std::span<const Aud::Filter::Biquad::Coefficients> sections) {
    for (std::size_t i = 0; i < sections.size(); ++i) {
        const auto& [b0, b1, b2, a1, a2] = sections[i];
        list.add("equaliser.band" + std::to_string(i), "b0 ", b0, ", b1 ", b1, ", b2 ", b2, ", a1 ", a1,
                 ", a2 ", a2);
    }
}

/// Which fields of the union are read depends on the kind of envelope that the mode names.
void addEnvelope(List& list, EnvelopeKind kind, const EnvelopeParameters& envelope) {
    list.add("envelope.elapsed", envelope.elapsed);
    list.add("envelope.startUValue", envelope.startUValue);
    if (kind == EnvelopeKind::rampHoldRamp) {
        const EnvelopeParameters::TwoRamps& ramps = envelope.twoRamps;
        list.add("envelope.type", envelope.type, " (ramp-hold-ramp)");
        list.add("envelope.firstRampStep", ramps.firstRampStep);
        list.add("envelope.lastRampStep", ramps.lastRampStep);
        list.add("envelope.firstRampLength", ramps.firstRampLength);
        list.add("envelope.holdLength", ramps.holdLength);
        list.add("envelope.firstRampCurve", ramps.firstRampCurve, curveName(ramps.firstRampCurve));
        list.add("envelope.lastRampCurve", ramps.lastRampCurve, curveName(ramps.lastRampCurve));
        return;
    }
    const EnvelopeParameters::OneRamp& ramp = envelope.oneRamp;
    if (kind == EnvelopeKind::rampHold || kind == EnvelopeKind::holdRamp) {
        list.add("envelope.type", envelope.type,
                 kind == EnvelopeKind::rampHold ? " (ramp-hold)" : " (hold-ramp)");
        list.add("envelope.length", ramp.length);
        list.add("envelope.curveType", ramp.curveType, curveName(ramp.curveType));
    }
    list.add("envelope.step", ramp.step);
}

/// A fixed level is one u-value; a dynamic one is where the walk along the nodes stands.
void addOuterLevel(List& list, const PerSourceRecord& record, LevelStage stage) {
    if (stage == LevelStage::fixed)
        list.addLevel("outerLevelUValue", record.outerLevelUValue);
    if (stage != LevelStage::dynamic)
        return;
    list.add("dynamicLevel.nodes", record.dynamicLevel.host.nodeCount);
    list.addLevel("dynamicLevel.uValue", record.dynamicLevel.uValue);
    list.add("dynamicLevel.uValueStep", record.dynamicLevel.uValueStep);
    list.add("dynamicLevel.samplesToNextNode", record.dynamicLevel.samplesToNextNode);
    list.add("dynamicLevel.stationary", static_cast<int>(record.dynamicLevel.stationary));
}

/// What the converter reads depends on whether an earlier call has opened the resampler.
void addFilteringConversion(List& list, const IteratorCreationParams& params) {
    const FilteringSRCState& state = params.source->srcState;
    if (state.opened != 0) {
        list.add("srcState.opened", "1 (carries on)");
        list.add("srcState.outSample", state.outSample);
        list.add("srcState.readIndex", state.readIndex);
    } else {
        list.add("srcState.opened", "0 (this call opens the resampler and renders nothing)");
        list.addPosition("subSampleStart", *params.subSampleStart);
    }
    list.add("speed", *params.speed);
}

} // namespace

std::vector<RecordNumber> recordNumbers(const IteratorCreationParams& params, unsigned long modeCode,
                                        std::span<const Aud::Filter::Biquad::Coefficients> sections) {
    const ModeFields fields = decodeModeCode(modeCode);
    const EnvelopeStage stage = envelopeStages[fields.envelopeStage];
    const PerSourceRecord& record = *params.source;

    List list;
    addSource(list, params, fields);
    if (fields.filterStage == FilterStage::equaliser)
        addEqualiser(list, sections);
    if (stage.envelope != EnvelopeKind::none)
        addEnvelope(list, stage.envelope, record.envelope);
    if (stage.middleLevel == MiddleLevelKind::fixed)
        list.addLevel("envelope.levelUValue", record.envelope.levelUValue);
    addOuterLevel(list, record, fields.levelStage);
    // The converter is the outermost layer, and so the last.
    if (fields.srcStage == ConversionStage::linear) {
        list.addPosition("subSampleStart", *params.subSampleStart);
        list.addPosition("subSampleStep", *params.subSampleStep);
    } else if (fields.srcStage == ConversionStage::filtering) {
        addFilteringConversion(list, params);
    }
    return list.take();
}

} // namespace audlmd
