#pragma once

#include "host/mix/OpenStrip.hpp"
#include "host/mix/Reporting.hpp"
#include "host/signal/BlockLoops.hpp"

#include <cstddef>
#include <span>
#include <vector>

namespace audlmd {

/// A strip that is open and sounds in a block.
struct SoundingStrip {
    OpenStrip* strip;
    std::size_t track;
    TimelineSpan span;
};

/// Sums what strips have rendered, in single precision from +0.0 on: the strips of each track in their order,
/// then the tracks in theirs. Gives the tracks by themselves, too, as stems, where they are wanted.
class TrackSums {
public:
    /// Of so many channels, in blocks of up to so many samples. `stems`: the number of tracks, or 0 where
    /// they are not wanted by themselves.
    TrackSums(std::size_t channels, std::size_t stems, std::size_t block);

    std::size_t channels() const { return channels_.size(); }
    /// The channels of the output, and behind them those of each stem.
    std::size_t buffers() const { return meters_.size(); }

    /// Sums one channel of the output, and that channel of all stems. `strips` are those that sound in the
    /// block, in the order of the timeline. Different channels may be summed at the same time.
    void sum(std::size_t channel, TimelineSpan block, std::span<const SoundingStrip> strips,
             std::span<const std::span<float>> buffers);

    /// Puts the levels of all that was summed into a report.
    void tell(MixReport& report) const;

private:
    /// Of one channel of the output, which one thread sums at a time.
    struct Channel {
        /// Of tracks without a bus of their own, not added yet.
        std::vector<BusTerm> direct;
        /// Of the track that is summed.
        std::vector<BusTerm> terms;
        /// Of one pass.
        std::vector<BusInput> inputs;
        /// One block, for a track of many terms without a stem.
        std::vector<float> track;
    };

    bool hasStems_;
    std::vector<Channel> channels_;
    /// One for each buffer.
    std::vector<OverloadMeter> meters_;
};

} // namespace audlmd
