#include "bench/Yardsticks.hpp"
#include "ole/Aud/SpeedLimit.hpp"

#include <libresample.h>

#include <algorithm>
#include <iterator>

namespace audlmd::bench {
namespace {

using Aud::SampleCacheSegment;
using Aud::Render::FilteringSRCState;
using Equaliser = Aud::Filter::MultiBandBiquad<5U>;

/// The calls of `count` source samples.
template <bool Forward, bool Equalised>
void makeSourceCalls(const SampleCacheSegment& segment, Equaliser& equaliser, unsigned int count) {
    for (; count != 0; --count) {
        segment.status();
        segment.status();
        segment.pSamples();
        if constexpr (Forward) {
            segment.status();
            segment.length();
        }
        if constexpr (Equalised) {
            float x = 0.25F;
            x = equaliser.band(0).processSample(x);
            x = equaliser.band(1).processSample(x);
            x = equaliser.band(2).processSample(x);
            x = equaliser.band(3).processSample(x);
            equaliser.band(4).processSample(x);
            equaliser.getLastProcessSampleResult();
        }
    }
}

/// Indexed by direction and filter stage.
constexpr decltype(&makeSourceCalls<false, false>) sourceCalls[2][2] = {
    {&makeSourceCalls<false, false>, &makeSourceCalls<false, true>},
    {&makeSourceCalls<true, false>, &makeSourceCalls<true, true>}};

} // namespace

Floor::Floor(Request& request, const SampleCacheSegment& segment)
    : fields_(request.fields()), speed_(request.speed()), segment_(segment),
      equaliser_(request.record().equaliser) {
    if (fields_.srcStage != Aud::Render::ConversionStage::filtering)
        return;
    resampler_.handle = resample_open(0, 1.0 / cfgAudioPlaybackSpeedLimit, 1024.0);
    resampler_.factor = 1.0 / speed_;
    std::fill(std::begin(resampler_.sourceBlock), std::end(resampler_.sourceBlock), 0.25F);
}

Floor::~Floor() {
    if (resampler_.handle != nullptr)
        resample_close(resampler_.handle);
}

void Floor::run(unsigned int count) {
    constexpr unsigned int block = FilteringSRCState::blockLength;
    const auto makeCalls = sourceCalls[static_cast<std::size_t>(fields_.direction)]
                                      [static_cast<std::size_t>(fields_.filterStage)];
    if (fields_.srcStage != Aud::Render::ConversionStage::filtering)
        return makeCalls(segment_, equaliser_, static_cast<unsigned int>(count * speed_));
    for (; count != 0; --count) {
        int used = 0;
        resample_process(resampler_.handle, resampler_.factor, resampler_.sourceBlock + resampler_.readIndex,
                         static_cast<int>(block - resampler_.readIndex), 0, &used, &resampler_.outSample, 1);
        resampler_.readIndex += static_cast<unsigned int>(used);
        if (resampler_.readIndex == block) {
            makeCalls(segment_, equaliser_, block);
            resampler_.readIndex = 0;
        }
    }
}

} // namespace audlmd::bench
