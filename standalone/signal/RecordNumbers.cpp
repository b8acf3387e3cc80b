#include "standalone/signal/GainLaws.hpp"
#include "standalone/signal/Speed.hpp"
#include "standalone/signal/StripPlayer.hpp"

#include <iomanip>
#include <sstream>
#include <string_view>

namespace audlmd {
namespace {

using Aud::Render::EnvelopeKind;
using Aud::Render::EnvelopeParameters;

/// Collects numbers, as many digits of them as a float has.
class List {
public:
    template <class... Parts>
    void add(std::string_view name, const Parts&... parts) {
        std::ostringstream text;
        text << std::setprecision(9);
        (text << ... << parts);
        numbers_.push_back({std::string(name), text.str()});
    }

    void addLevel(std::string_view name, float uValue) {
        std::ostringstream decibels;
        decibels << std::showpos << std::fixed << std::setprecision(2)
                 << decibelsOfGain(mixerStyleGain(static_cast<double>(uValue)));
        add(name, uValue, " (", decibels.str(), " dB)");
    }

    std::vector<RecordNumber> take() { return std::move(numbers_); }

private:
    std::vector<RecordNumber> numbers_;
};

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

} // namespace

std::vector<RecordNumber> StripPlayer::recordNumbers() const {
    const Stretch stretch = nextStretch(outputLength_ - position_);
    const std::int64_t position = materialPosition(stretch.firstSample);
    const Aud::Render::ModeFields fields = Aud::Render::decodeModeCode(modeCode_);

    List list;
    if (settings_.converter != Converter::filtering)
        list.add("startPosition", position);
    else if (settings_.reverse)
        list.add("reverseFilteringStartPosition", position + 1);
    else
        list.add("forwardFilteringStartPosition", position);
    list.add("requestFlag", settings_.wait ? "true (waits)" : "false (does not wait)");
    if (!settings_.reverse)
        list.add("forwardArgument", settings_.forwardArgument);
    list.add("gearing", gearing_.sourceSamplesPerOutputSample);

    for (std::size_t i = 0; i < settings_.equaliser.size(); ++i) {
        const auto section = sectionOf(settings_.equaliser[i], settings_.sampleRate);
        list.add("equaliser.band" + std::to_string(i), "b0 ", section.b0, ", b1 ", section.b1, ", b2 ",
                 section.b2, ", a1 ", section.a1, ", a2 ", section.a2);
    }
    if (envelope_.kind() != EnvelopeKind::none)
        addEnvelope(list, envelope_.kind(), stretch.envelope);
    if (settings_.middleLevel)
        list.addLevel("envelope.levelUValue", stretch.envelope.levelUValue);
    if (fields.levelStage == Aud::Render::LevelStage::fixed)
        list.addLevel("outerLevelUValue", record_.outerLevelUValue);
    if (fields.levelStage == Aud::Render::LevelStage::dynamic) {
        Aud::DynamicLevelControl::DynamicLevelApplyingIteratorState level;
        settings_.automation->automation.place(level, levelPosition(stretch.firstSample),
                                               settings_.automation->direction);
        list.add("dynamicLevel.nodes", level.host.nodeCount);
        list.addLevel("dynamicLevel.uValue", level.uValue);
        list.add("dynamicLevel.uValueStep", level.uValueStep);
        list.add("dynamicLevel.samplesToNextNode", level.samplesToNextNode);
        list.add("dynamicLevel.stationary", static_cast<int>(level.stationary));
    }
    if (settings_.converter != Converter::none)
        list.add("subSampleStart", stretch.offset.sample, " + ", stretch.offset.fraction, "/",
                 Aud::SubSamplePos::fractionsPerSample);
    if (settings_.converter == Converter::linear)
        list.add("subSampleStep", step_.sample, " + ", step_.fraction, "/",
                 Aud::SubSamplePos::fractionsPerSample);
    if (settings_.converter == Converter::filtering) {
        list.add("speed", speed_);
        list.add("srcState.factor", 1.0 / speedInForce_);
    }
    return list.take();
}

} // namespace audlmd
