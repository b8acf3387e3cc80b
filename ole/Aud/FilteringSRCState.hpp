#pragma once

#include <cstdint>

namespace Aud::Render {

/// What the filtering converter keeps from one render call to the next. The host owns it, as part of the
/// per-source record, and starts a new stream by closing the resampler and clearing the state.
/// \snippet chain.cpp filtering
struct FilteringSRCState {
    /// In samples.
    static constexpr std::uint32_t blockLength = 64;

    /// The open resampler of libresample. The renderer opens it, the host closes it.
    void* handle = nullptr;
    /// The factor in force, in output samples per source sample, already bounded.
    double factor = 1.0;
    /// The current output sample: the resampler's output buffer, one sample long.
    float outSample = 0.0F;
    /// Source samples that have passed the chain below and wait for the resampler.
    float sourceBlock[blockLength] = {};
    /// Index of the first sample in sourceBlock that the resampler has not taken: 0 to 63.
    std::uint32_t readIndex = 0;
    /// The position of the source at the end of the latest render call: the next sample that a refill would
    /// read.
    std::int64_t nextSourcePos = 0;
    /// Not zero: nextSourcePos has been recorded.
    std::uint8_t positionRecorded = 0;
    /// Not zero: the resampler is open and the block filled. Only the host clears it.
    std::uint8_t opened = 0;
};

} // namespace Aud::Render
