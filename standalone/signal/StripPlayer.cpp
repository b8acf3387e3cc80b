#include "standalone/signal/StripPlayer.hpp"

#include "ole/Aud/SampleCacheIterators.hpp"
#include "standalone/signal/Speed.hpp"

#include <libresample.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <stdexcept>
#include <utility>

namespace audlmd {
namespace {

using Aud::SubSamplePos;
using Aud::Render::EnvelopeKind;
using Aud::Render::FilteringSRCState;

constexpr std::uint64_t longestRange = std::uint64_t{1} << 43;
/// Of one render call, in output samples.
constexpr std::uint64_t longestCall = std::uint64_t{1} << 30;

/// The filtering converter reads whole blocks of the inner chain, the first two when it is primed. An
/// envelope must not have to change before they are used up.
constexpr std::uint32_t filteringAlignment = 2 * FilteringSRCState::blockLength;

std::int64_t lengthOf(const StripSettings& settings) {
    if (settings.from >= settings.to)
        throw std::invalid_argument("the range from sample " + std::to_string(settings.from) + " to sample " +
                                    std::to_string(settings.to) + " is empty");
    if (static_cast<std::uint64_t>(settings.to) - static_cast<std::uint64_t>(settings.from) > longestRange)
        throw std::invalid_argument("the range is longer than " + std::to_string(longestRange) + " samples");
    return settings.to - settings.from;
}

void requireUValue(const std::optional<float>& uValue, const char* level) {
    if (uValue && !std::isfinite(*uValue))
        throw std::invalid_argument(std::string("the u-value of the ") + level + " level is not a number");
}

std::uint32_t alignmentFor(Converter converter) {
    return converter == Converter::filtering ? filteringAlignment : 1;
}

} // namespace

StripPlayer::StripPlayer(Aud::SampleCache& cache, StripSettings settings)
    : settings_(std::move(settings)), cache_(cache), rangeLength_(lengthOf(settings_)),
      envelope_(settings_.fade, static_cast<std::uint64_t>(rangeLength_), alignmentFor(settings_.converter)) {
    if (settings_.outerLevel && settings_.automation)
        throw std::invalid_argument("an outer level and an automation take the same place in the chain: "
                                    "choose one of them, or use the middle level");
    requireUValue(settings_.middleLevel, "middle");
    requireUValue(settings_.outerLevel, "outer");
    setBands(record_.equaliser, settings_.equaliser, settings_.sampleRate);
    record_.strip = ce_handle(settings_.cookie);
    record_.outerLevelUValue = settings_.outerLevel.value_or(1.0F);
    chooseMode();
    chooseSpeed();
}

StripPlayer::~StripPlayer() {
    closeResampler();
}

void StripPlayer::chooseMode() {
    using namespace Aud::Render;
    ModeFields fields{};
    using Direction = Aud::Render::Direction;
    fields.direction = settings_.reverse ? Direction::reverse : Direction::forward;
    fields.filterStage = settings_.equaliser.empty() ? FilterStage::none : FilterStage::equaliser;
    fields.srcStage = settings_.converter;
    if (settings_.automation) {
        fields.levelStage = LevelStage::dynamic;
        fields.dynamicLevelDirection = settings_.automation->direction;
    } else if (settings_.outerLevel) {
        fields.levelStage = LevelStage::fixed;
    }
    const auto codeWith = [&](EnvelopeKind envelope) {
        const auto& stages = Aud::Render::envelopeStages;
        const auto fits = [&](const Aud::Render::EnvelopeStage& stage) {
            return stage.envelope == envelope && (stage.middleLevel == Aud::Render::MiddleLevelKind::fixed) ==
                                                     settings_.middleLevel.has_value();
        };
        fields.envelopeStage =
            static_cast<unsigned int>(std::find_if(stages.begin(), stages.end(), fits) - stages.begin());
        return Aud::Render::encodeModeCode(fields);
    };
    modeCode_ = codeWith(envelope_.kind());
    fullLevelModeCode_ = codeWith(EnvelopeKind::none);
}

void StripPlayer::chooseSpeed() {
    requireSpeed(settings_.speed);
    double speed = settings_.speed;
    switch (settings_.converter) {
    case Converter::none:
        if (speed != 1.0)
            throw std::invalid_argument("a speed other than 1 needs a converter");
        break;
    case Converter::linear:
        step_ = subSamplePosOf(speed);
        speedInForce_ = sourceSamplesOf(step_);
        break;
    case Converter::filtering:
        speed_ = static_cast<float>(speed);
        speedInForce_ = filteringSpeedInForce(static_cast<double>(speed_));
        speed = filteringSpeedInForce(speed);
        // Where the first output sample is skipped to, see start().
        step_ = std::max(subSamplePosOf(speedInForce_), SubSamplePos(0, 1));
        break;
    }
    // By the speed asked for, not by its rounded form, whose difference might make one sample more.
    outputLength_ = static_cast<std::uint64_t>(std::ceil(static_cast<double>(rangeLength_) / speed));
    gearing_ = settings_.gearing.value_or(Orv::OutputGearing{speedInForce_});
}

bool StripPlayer::speedIsLimited() const {
    return settings_.converter == Converter::filtering && speedInForce_ != static_cast<double>(speed_);
}

std::int64_t StripPlayer::materialPosition(std::int64_t sample) const {
    return settings_.reverse ? settings_.to - 1 - sample : settings_.from + sample;
}

std::int64_t StripPlayer::levelPosition(std::int64_t sample) const {
    return settings_.automation->direction == DynamicLevelDirection::forwards ? sample
                                                                              : rangeLength_ - 1 - sample;
}

SubSamplePos StripPlayer::readPosition() const {
    // On a whole position other than the first the linear converter lags by one sample. So whole speeds start
    // at position 1, where it yields the first sample, exactly; any others start the least fraction beyond 0,
    // which keeps them off whole positions.
    const SubSamplePos start = step_.fraction == 0 ? SubSamplePos(1, 0) : SubSamplePos(0, 1);
    return advanced(start, step_, position_);
}

std::int64_t StripPlayer::firstSample() const {
    switch (settings_.converter) {
    case Converter::linear: {
        // One sample early: the converter reads both neighbours of its position again.
        const SubSamplePos position = readPosition();
        return position.fraction > 0 ? position.sample : position.sample - 1;
    }
    case Converter::filtering:
        if (!continues_)
            return std::llround(static_cast<double>(position_) * speedInForce_);
        return settings_.reverse ? settings_.to - 1 - record_.srcState.nextSourcePos
                                 : record_.srcState.nextSourcePos - settings_.from;
    case Converter::none:
        break;
    }
    return static_cast<std::int64_t>(position_);
}

StripPlayer::Stretch StripPlayer::nextStretch(std::uint64_t count) const {
    Stretch stretch{modeCode_, firstSample(), {}, step_, 0};
    std::int64_t end = std::numeric_limits<std::int64_t>::max();
    if (envelope_.kind() != EnvelopeKind::none) {
        const FadeEnvelope::Placement placement = envelope_.at(stretch.firstSample);
        stretch.envelope = placement.parameters;
        end = placement.end;
    }
    const std::int64_t fullLevelEnd = envelope_.fullLevelEnd(stretch.firstSample);
    if (fullLevelEnd > stretch.firstSample) {
        stretch.modeCode = fullLevelModeCode_;
        end = fullLevelEnd;
    }
    stretch.envelope.levelUValue = settings_.middleLevel.value_or(1.0F);

    std::uint64_t most = longestCall;
    switch (settings_.converter) {
    case Converter::none:
        most = static_cast<std::uint64_t>(end - stretch.firstSample);
        break;
    case Converter::linear: {
        const SubSamplePos position = readPosition();
        stretch.offset = SubSamplePos(position.sample - stretch.firstSample, position.fraction);
        most = positionsUpTo(SubSamplePos(end, 0), position, step_);
        break;
    }
    case Converter::filtering: {
        // The least number of output samples that a block is good for; one more may fit into some.
        const auto perBlock =
            static_cast<std::uint64_t>(FilteringSRCState::blockLength / speedInForce_ - 1e-6);
        const auto blocks =
            static_cast<std::uint64_t>(end - stretch.firstSample) / FilteringSRCState::blockLength;
        most = perBlock * std::min(blocks, longestCall);
        break;
    }
    }
    stretch.count = static_cast<unsigned int>(std::min({count, most, longestCall}));
    return stretch;
}

std::uint64_t StripPlayer::renderThrough(const RenderCall& call, std::uint64_t count) {
    const std::uint64_t begin = position_;
    const std::uint64_t end = begin + std::min(count, outputLength_ - begin);
    try {
        if (begin != end && !continues_)
            start(call);
        while (position_ != end) {
            const Stretch stretch = nextStretch(end - position_);
            renderStretch(call, stretch);
            position_ += stretch.count;
        }
    } catch (...) {
        position_ = begin;
        continues_ = false;
        throw;
    }
    return end - begin;
}

void StripPlayer::renderStretch(const RenderCall& call, const Stretch& stretch) {
    const bool linear = settings_.converter == Converter::linear;
    if (linear && settings_.automation)
        settings_.automation->automation.place(record_.dynamicLevel, levelPosition(stretch.firstSample),
                                               settings_.automation->direction);
    record_.envelope = stretch.envelope;

    const std::int64_t position = materialPosition(stretch.firstSample);
    const std::int64_t afterPosition = position + 1;
    Aud::Render::IteratorCreationParams params{.source = &record_,
                                               .startPosition = &position,
                                               .requestFlag = &settings_.wait,
                                               .forwardArgument = &settings_.forwardArgument,
                                               .forwardFilteringStartPosition = &position,
                                               // A reverse reader is given the end of what it reads.
                                               .reverseFilteringStartPosition = &afterPosition,
                                               .subSampleStart = &stretch.offset,
                                               .subSampleStep = &step_,
                                               .speed = &speed_,
                                               .gearing = &gearing_,
                                               .cache = &cache_};
    call(stretch.modeCode, params, stretch.count);
    // The converter has read one sample beyond that with which the next call starts.
    if (linear && !settings_.equaliser.empty())
        for (unsigned int band = 0; band < equaliserBandCount; ++band)
            record_.equaliser.band(band).stepBack();
}

void StripPlayer::start(const RenderCall& call) {
    const std::int64_t sample = firstSample();
    if (!settings_.equaliser.empty())
        primeEqualiser(sample);
    if (settings_.automation)
        settings_.automation->automation.place(record_.dynamicLevel, levelPosition(sample),
                                               settings_.automation->direction);
    if (settings_.converter == Converter::filtering) {
        closeResampler();
        envelope_ = FadeEnvelope(settings_.fade, static_cast<std::uint64_t>(rangeLength_), filteringAlignment,
                                 sample);
        // A start offset makes the converter put out the first sample, and moves it on by the offset. Where
        // that is the step of every other sample too, the first output is that of the range's first sample,
        // not what the record held before.
        Stretch none = nextStretch(1);
        none.count = 0;
        renderStretch(call, none);
    }
    continues_ = true;
}

void StripPlayer::primeEqualiser(std::int64_t sample) {
    for (unsigned int band = 0; band < equaliserBandCount; ++band)
        record_.equaliser.band(band).reset();
    const std::int64_t position = materialPosition(sample);
    const bool wait = settings_.wait;
    const float first = settings_.reverse
                            ? *Aud::SampleCache::ReverseIterator(settings_.cookie, position + 1, wait, cache_,
                                                                 !wait, gearing_)
                            : *Aud::SampleCache::ForwardIterator(settings_.cookie, position, wait, cache_,
                                                                 settings_.forwardArgument, !wait, gearing_);
    record_.equaliser.processSample(first);
}

void StripPlayer::closeResampler() {
    if (record_.srcState.handle != nullptr)
        resample_close(record_.srcState.handle);
    record_.srcState = {};
}

void StripPlayer::seek(std::uint64_t outputPosition) {
    if (outputPosition > outputLength_)
        throw std::out_of_range("output sample " + std::to_string(outputPosition) + " lies beyond the " +
                                std::to_string(outputLength_) + " of the strip");
    position_ = outputPosition;
    continues_ = false;
}

} // namespace audlmd
