#include "host/signal/StripPlan.hpp"

#include "host/signal/BestConverter.hpp"
#include "host/signal/Speed.hpp"

#include <algorithm>
#include <cmath>
#include <stdexcept>
#include <string>
#include <utility>

namespace audlmd {
namespace {

Distance<SourceRate> lengthOf(const StripSettings& settings) {
    const auto from = settings.from.number();
    const auto to = settings.to.number();
    requirePosition(from, "the start of the range");
    requirePosition(to, "the end of the range");
    if (from >= to)
        throw std::invalid_argument("the range from sample " + std::to_string(from) + " to sample " +
                                    std::to_string(to) + " is empty");
    const Distance<SourceRate> length = settings.to - settings.from;
    if (length > longestRange)
        throw std::invalid_argument("the range is longer than " + std::to_string(longestRange) + " samples");
    return length;
}

void requireUValue(const std::optional<float>& uValue, const char* level) {
    if (uValue && !std::isfinite(*uValue))
        throw std::invalid_argument(std::string("the u-value of the ") + level + " level is not a number");
}

/// The material of `best` is at normal speed.
Aud::Render::ConversionStage stageOf(Converter converter) {
    using Aud::Render::ConversionStage;
    switch (converter) {
    case Converter::linear:
        return ConversionStage::linear;
    case Converter::filtering:
        return ConversionStage::filtering;
    case Converter::none:
    case Converter::best:
        break;
    }
    return ConversionStage::none;
}

/// The value of the mode code's envelope field. Without a middle level, stages that pass the level through
/// and stages that have none fit alike: each kind of envelope has one of the two.
unsigned int envelopeStageOf(Aud::Render::EnvelopeKind envelope, bool middleLevel) {
    using namespace Aud::Render;
    const auto fits = [&](const EnvelopeStage& stage) {
        return stage.envelope == envelope && (stage.middleLevel == MiddleLevelKind::fixed) == middleLevel;
    };
    return static_cast<unsigned int>(std::find_if(envelopeStages.begin(), envelopeStages.end(), fits) -
                                     envelopeStages.begin());
}

} // namespace

void requirePosition(std::int64_t position, const std::string& what) {
    if (position < -farthestPosition || position > farthestPosition)
        throw std::invalid_argument(what + " is sample " + std::to_string(position) +
                                    ", out of range: positions go up to " + std::to_string(farthestPosition) +
                                    " on either side of 0");
}

/// Of the requested speed: the rounded one might make one sample more.
std::uint64_t outputLengthOf(const StripSettings& settings) {
    return static_cast<std::uint64_t>(std::ceil(static_cast<double>(lengthOf(settings)) / settings.speed));
}

StripPlan::StripPlan(StripSettings stripSettings)
    : settings(std::move(stripSettings)), rangeLength(lengthOf(settings)) {
    if (settings.outerLevel && settings.automation)
        throw std::invalid_argument("an outer level and an automation take the same place in the chain: "
                                    "choose one of them, or use the middle level");
    requireUValue(settings.middleLevel, "middle");
    requireUValue(settings.outerLevel, "outer");
    setBands(equaliser, settings.equaliser, settings.sampleRate);
    chooseModes();
    chooseSpeed();
}

void StripPlan::chooseModes() {
    using namespace Aud::Render;
    using Aud::Render::Direction;
    ModeFields fields{};
    fields.direction = settings.reverse ? Direction::reverse : Direction::forward;
    fields.filterStage = settings.equaliser.empty() ? FilterStage::none : FilterStage::equaliser;
    fields.srcStage = stageOf(settings.converter);
    if (settings.automation) {
        fields.levelStage = LevelStage::dynamic;
        fields.dynamicLevelDirection = settings.automation->direction;
    } else if (settings.outerLevel) {
        fields.levelStage = LevelStage::fixed;
    }
    const bool middleLevel = settings.middleLevel.has_value();
    const FadeEnvelope envelope(settings.fade, static_cast<std::uint64_t>(rangeLength));
    // The alignment of the fades, which depends on the converter, has no influence on the kind.
    fields.envelopeStage = envelopeStageOf(envelope.kind(), middleLevel);
    modeCode = encodeModeCode(fields);
    // The second code differs from the first in this one field.
    fields.envelopeStage = envelopeStageOf(EnvelopeKind::none, middleLevel);
    fullLevelModeCode = encodeModeCode(fields);
}

void StripPlan::chooseSpeed() {
    requireSpeed(settings.speed);
    const double asked = settings.speed;
    switch (settings.converter) {
    case Converter::none:
        if (asked != 1.0)
            throw std::invalid_argument("a speed other than 1 needs a converter");
        break;
    case Converter::linear:
        step = subSamplePosOf(asked);
        speedInForce = sourceSamplesOf(step);
        break;
    case Converter::filtering:
        requireFilteringSpeed(asked);
        // The library reads the speed in single precision and limits that number, which may have been rounded
        // beyond the limit. The output length follows from the speed before the rounding.
        speed = static_cast<float>(asked);
        speedInForce = filteringSpeedInForce(static_cast<double>(speed));
        step = subSamplePosOf(speedInForce);
        break;
    case Converter::best:
        const StripPlan checked(atNormalSpeed(settings));
        speedInForce = asked;
        break;
    }
    outputLength = outputLengthOf(settings);
    gearing = settings.gearing.value_or(Orv::OutputGearing{speedInForce});
}

/// In reverse the range is read from its last sample, which lies one before `to`.
MaterialSample StripPlan::inMaterial(RangeSample sample) const {
    const Distance<SourceRate> delivered = sample - RangeSample();
    return settings.reverse ? settings.to - 1 - delivered : settings.from + delivered;
}

RangeSample StripPlan::inRange(MaterialSample sample) const {
    return RangeSample() + (settings.reverse ? settings.to - 1 - sample : sample - settings.from);
}

std::int64_t StripPlan::automationPosition(RangeSample sample) const {
    const auto delivered = sample.number();
    const bool walksForwards = settings.automation->direction == DynamicLevelDirection::forwards;
    return walksForwards ? delivered : rangeLength - 1 - delivered;
}

} // namespace audlmd
