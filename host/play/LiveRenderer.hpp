#pragma once

#include "host/play/BlockRing.hpp"
#include "host/play/LiveContent.hpp"
#include "host/play/LiveMix.hpp"
#include "host/play/LiveOptions.hpp"
#include "host/play/Transport.hpp"

#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <span>
#include <vector>

namespace audlmd {

/// The half of a live player that the render thread runs: fills the ring, as far ahead as the latency allows.
class LiveRenderer {
public:
    struct Sizes {
        std::size_t blockFrames;
        /// The most blocks of one generation that wait in the ring. The ring is larger, so that a new
        /// generation need not wait until the callback has dropped the old one.
        std::size_t blocksAhead;
        /// Of the fades at both ends of a loop.
        std::size_t fadeFrames;
        int sampleRate;
    };
    /// Throws std::invalid_argument for options out of range.
    static Sizes sizesFor(const LiveOptions& options, int sampleRate);

    /// `mix` is null unless the content is that of a timeline: then voices at speed 1 are handed to the mix.
    LiveRenderer(LiveContent& content, LiveMix* mix, BlockRing& ring, const Sizes& sizes);

    /// Has the first samples of an order loaded, from a position on: two rings, because a device may take the
    /// first one at once, and the second is rendered directly after it. If loading takes more than half of
    /// real time, loads up to two seconds ahead, or playback would be late from the start. Waits for as long
    /// as `isWanted` says so; returns whether all is loaded. Changes nothing of this object.
    bool awaitStart(const LiveOrder& order, double position, const std::function<bool()>& isWanted) const;

    /// Renders the next block, where the ring has room; returns whether there was room. For an order of a new
    /// generation, starts at `position` first and fills the ring. Throws what render functions throw.
    ///
    /// One block at a time: a device that takes blocks faster than they are rendered never lets the ring get
    /// full, and the next order must be heard all the same.
    bool follow(const LiveOrder& order, double position);
    /// The generation that was followed last.
    std::uint64_t generation() const { return generation_; }
    /// Renders nothing more until the next generation after the order's. Use this after an exception.
    void giveUp(const LiveOrder& order) {
        generation_ = order.generation;
        voice_.reset();
    }
    /// Whether there is nothing to render until the next generation.
    bool isIdle() const { return voice_ == nullptr; }

private:
    void begin(const LiveOrder& order, double position);
    std::unique_ptr<LiveVoice> start(double position, double speed);
    bool renderBlock(const LiveOrder& order);
    /// Jumps to the start of the loop where the voice has reached the end and is silent. Returns how many
    /// frames are left up to the end.
    std::size_t loop(const RangeSpan& range, double speed);
    /// Frames from the next one to a position; 0 where the voice is there, or beyond.
    std::size_t framesTo(RangeSample position) const;
    void interleave(LiveBlock& block, std::size_t framesToSeam);

    LiveContent& content_;
    LiveMix* mix_;
    BlockRing& ring_;
    const Sizes sizes_;
    std::uint64_t generation_ = 0;
    /// How many blocks were written before the generation.
    std::uint64_t writtenBefore_ = 0;
    std::unique_ptr<LiveVoice> voice_;
    /// Of the fades around the end of a loop: from 0, silent, to the length of a fade, full level.
    std::size_t fade_ = 0;
    bool loopIsRequested_ = false;
    std::vector<std::vector<float>> buffers_;
};

} // namespace audlmd
