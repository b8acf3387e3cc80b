#include "bench/Request.hpp"

#include "ole/Aud/GainCurves.hpp"

#include <libresample.h>

#include <cmath>
#include <cstddef>

namespace audlmd::bench {
namespace {

using namespace Aud::Render;

Aud::SubSamplePos subSampleStep(double speed) {
    const double whole = std::floor(speed);
    return {static_cast<long>(whole),
            static_cast<int>((speed - whole) * static_cast<double>(Aud::SubSamplePos::fractionsPerSample))};
}

/// A fade inside the curves' range, whose phases share the samples.
EnvelopeParameters fade(EnvelopeKind kind, unsigned int samples) {
    EnvelopeParameters fade{};
    fade.startUValue = 0.25F;
    fade.levelUValue = 0.9F;
    const float step = 0.5F / static_cast<float>(samples);
    if (kind == EnvelopeKind::rampHoldRamp) {
        fade.type = eRampHoldRamp;
        fade.twoRamps = {.firstRampStep = step,
                         .lastRampStep = -step,
                         .firstRampLength = samples / 3,
                         .holdLength = samples / 3,
                         .firstRampCurve = Aud::GainCurve::eMixerStyleLog,
                         .lastRampCurve = Aud::GainCurve::eMixerStyleLog};
    } else {
        fade.type = kind == EnvelopeKind::holdRamp ? eHoldRamp : eRampHold;
        fade.oneRamp = {
            .step = step, .length = samples / 2, .curveType = Aud::GainCurve::eMixerStyleLog, .unused = {}};
    }
    return fade;
}

} // namespace

std::vector<float> testMaterial() {
    std::vector<float> material(std::size_t{3} * Cache::segmentLength);
    for (std::size_t i = 0; i < material.size(); ++i)
        material[i] = 0.5F * std::sin(static_cast<float>(i) * 0.05F);
    return material;
}

Request::Request(unsigned int code, Aud::SampleCache& cache, unsigned int sourceSamples, double speed)
    : fields_(decodeModeCode(code)), speed_(fields_.srcStage == ConversionStage::none ? 1.0 : speed),
      // In the middle of a segment, so that calls in either direction stay inside it.
      start_(Cache::segmentLength / 2), subSampleStep_(subSampleStep(speed_)),
      floatSpeed_(static_cast<float>(speed_)), params_{.source = &record_,
                                                       .startPosition = &start_,
                                                       .requestFlag = &wait_,
                                                       .forwardArgument = &segmentsAhead_,
                                                       .forwardFilteringStartPosition = &start_,
                                                       .reverseFilteringStartPosition = &start_,
                                                       .subSampleStart = &subSampleStart_,
                                                       .subSampleStep = &subSampleStep_,
                                                       .speed = &floatSpeed_,
                                                       .gearing = &gearing_,
                                                       .cache = &cache} {
    record_.envelope = fade(envelopeStages[fields_.envelopeStage].envelope, sourceSamples);
    record_.outerLevelUValue = 0.8F;
    record_.dynamicLevel.samplesToNextNode = 48000;
    record_.dynamicLevel.uValue = 0.5F;
    record_.dynamicLevel.uValueStep = 0.5F / 48000.0F;
    record_.dynamicLevel.stationary = 0;
    for (unsigned int band = 0; band < 5; ++band)
        record_.equaliser.band(band).setCoefficients(
            {.b0 = 1.01, .b1 = -1.8 + 0.02 * band, .b2 = 0.82, .a1 = -1.8 + 0.02 * band, .a2 = 0.83});
}

Request::~Request() {
    if (record_.srcState.opened != 0)
        resample_close(record_.srcState.handle);
}

} // namespace audlmd::bench
