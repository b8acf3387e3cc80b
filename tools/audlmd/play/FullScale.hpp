#pragma once

#include "host/mix/MixReport.hpp"

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <span>
#include <string>
#include <vector>

namespace audlmd::command {

/// The limits of a sound device: clips what is beyond full scale, which some devices would play as noise, and
/// counts it.
class FullScale {
public:
    explicit FullScale(std::size_t channels) : channels_(channels) {}

    /// The audio callback's: clips interleaved frames, of which the first lies at `position` of the sound.
    /// Allocates nothing, takes no lock.
    void clip(std::span<float> interleaved, RangeSample position) noexcept;

    /// Samples of all channels that were clipped so far.
    std::uint64_t clipped() const;
    /// For each channel that was clipped a line, in the words of a render.
    std::vector<std::string> lines(int sampleRate) const;

private:
    /// Written by the callback alone.
    struct Channel {
        std::atomic<std::uint64_t> samples{0};
        std::atomic<float> peak{0.0F};
        std::atomic<std::int64_t> firstAt{0};
    };
    std::vector<Channel> channels_;
};

} // namespace audlmd::command
