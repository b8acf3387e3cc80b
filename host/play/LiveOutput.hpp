#pragma once

#include "host/play/BlockRing.hpp"
#include "host/signal/Clocks.hpp"

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

namespace audlmd {

/// The half of a live player that the audio callback runs: copies, fades and counts. fill() allocates
/// nothing, takes no lock, makes no system call, throws nothing and ends after a number of steps that is
/// known before: one for each frame, and one for each block of the ring.
///
/// A change of the transport is a new generation. The callback fades out what it plays of the old one, drops
/// the rest, and fades in the new one as soon as blocks of the new generation arrive. Where blocks are late,
/// the last frame fades out in their place, so that nothing clicks.
class LiveOutput {
public:
    /// `fadeFrames` is the length of every fade, at least 1.
    LiveOutput(BlockRing& ring, std::size_t channels, std::size_t fadeFrames);

    /// The callback's: fills a buffer of interleaved frames.
    void fill(std::span<float> interleaved) noexcept;

    // The functions below are for any thread.

    /// Asks the callback to turn to a generation, which is greater than all before.
    void turnTo(std::uint64_t generation) { wanted_.store(generation, std::memory_order_release); }
    /// Notes where a generation starts. position() says so at once, until the callback has begun that
    /// generation or a later one. Call this before turnTo().
    void startAt(RangeSample position, std::uint64_t generation) {
        start_.store(position, std::memory_order_relaxed);
        startOf_.store(generation, std::memory_order_release);
    }

    /// In samples of the range that is played: what the device is given next.
    double position() const {
        if (startOf_.load(std::memory_order_acquire) > begun_.load(std::memory_order_acquire))
            return static_cast<double>(start_.load(std::memory_order_relaxed).number());
        return position_.load(std::memory_order_acquire);
    }
    /// Whether a generation was played to its end.
    bool hasEnded(std::uint64_t generation) const {
        return ended_.load(std::memory_order_acquire) == generation;
    }

    /// A linear gain. Moves over some milliseconds.
    void setGain(float gain) { gain_.store(gain, std::memory_order_relaxed); }
    /// The largest magnitude of a channel since the last call.
    float takePeak(std::size_t channel) { return peaks_[channel].exchange(0.0F, std::memory_order_relaxed); }

    /// Frames for which no block was there in time, and how often that began.
    std::uint64_t starvedFrames() const { return starvedFrames_.load(std::memory_order_relaxed); }
    std::uint64_t starvedEpisodes() const { return starvedEpisodes_.load(std::memory_order_relaxed); }

private:
    /// The next samples of the generation that is heard, and how many frames of them: at most `frames`. Null
    /// where there are none yet.
    const float* next(std::size_t& frames);
    /// The first block of the generation that is heard has come.
    void begin(const LiveBlock& block);
    /// Moves on in the block at the front of the ring.
    void advance(std::size_t frames);
    void countStarved(std::size_t frames);
    /// Writes frames while the fade goes up or down: `samples`, or else the last frame again and again.
    void play(const float* samples, std::span<float> out, bool fadesOut);
    void measure(std::span<const float> interleaved);

    BlockRing& ring_;
    const std::size_t channels_;
    const std::size_t fadeFrames_;

    // The callback's own.
    std::uint64_t heard_ = 0;
    /// Frames of the block at the front of the ring that are used up.
    std::size_t used_ = 0;
    /// From 0, silent, to fadeFrames_, full level.
    std::size_t fade_ = 0;
    /// Whether a block of the generation has come, and the last one has not been used up.
    bool isSounding_ = false;
    bool isStarving_ = false;
    float currentGain_ = 1.0F;
    std::vector<float> lastFrame_;

    std::atomic<std::uint64_t> wanted_{0};
    std::atomic<std::uint64_t> ended_{0};
    std::atomic<double> position_{0.0};
    /// The last start that was asked for, and the generation that starts there.
    std::atomic<RangeSample> start_;
    std::atomic<std::uint64_t> startOf_{0};
    /// The last generation of which the callback has played a block.
    std::atomic<std::uint64_t> begun_{0};
    std::atomic<float> gain_{1.0F};
    std::vector<std::atomic<float>> peaks_;
    std::atomic<std::uint64_t> starvedFrames_{0};
    std::atomic<std::uint64_t> starvedEpisodes_{0};

    static_assert(std::atomic<double>::is_always_lock_free && std::atomic<float>::is_always_lock_free);
};

} // namespace audlmd
