#pragma once

#include <cstdint>

namespace Aud::Render {

/// What the filtering converter keeps from one render call to the next, owned by the host.
struct FilteringSRCState {
    static constexpr std::uint32_t blockLength = 64;

    void* handle = nullptr;
    /// Output samples per source sample now in force, already bounded.
    double factor = 1.0;
    /// The current output sample: the resampler's output buffer, one sample long.
    float outSample = 0.0F;
    /// Source samples, already through the inner chain, that wait for the resampler.
    float sourceBlock[blockLength] = {};
    /// Of the first sample in the block that the resampler has not taken: 0 to 63.
    std::uint32_t readIndex = 0;
    /// Where the source stood when a render call ended: the next sample that a refill would read.
    std::int64_t nextSourcePos = 0;
    std::uint8_t positionRecorded = 0;
    /// Set once the resampler is open and the block filled. Closing and clearing it is the host's.
    std::uint8_t opened = 0;
};

} // namespace Aud::Render
