#pragma once

#include "host/cache/SampleSource.hpp"
#include "host/services/Threads.hpp"

#include <cstddef>
#include <cstdint>
#include <deque>
#include <functional>
#include <span>
#include <vector>

namespace audlmd {

/// Samples that are made for all channels together and read by one channel after another. A file, for one,
/// stores the samples of all channels side by side, and a mixer renders them at one go, while a cache reads
/// each channel on its own. What was made for one channel is kept until the other channels have read it, too.
///
/// Thread safe. Readers wait for each other: who needs what is being made for another channel finds it there.
class ChannelExcerpts {
public:
    /// How an excerpt holds the samples of its channels: frame by frame, or one channel after another.
    enum class Layout { interleaved, planar };

    /// An excerpt is dropped when a new one needs room: before others one that all channels have read, else
    /// the oldest. The trap: readers of two channels that are further apart than this have all of it made
    /// twice.
    struct Limits {
        /// Of all excerpts and channels together.
        std::size_t samples;
        /// So many are kept however long they are, for readers at both sides of a border or a turn.
        std::size_t excerpts;
    };

    /// Fills `samples` with all channels, from frame `position` on. On one thread at a time. What it throws,
    /// read() throws.
    using Make = std::function<void(std::int64_t position, std::span<float> samples)>;

    /// There must be a channel.
    ChannelExcerpts(std::size_t channels, Layout layout, const Limits& limits, Make make);

    /// Fills `samples` with one channel, counted from 0, from frame `position` on.
    void read(std::size_t channel, std::int64_t position, std::span<float> samples);
    /// Fills stretches of one length, also where two are of one channel. Where they are all channels of
    /// frames, each once, nothing is kept for later.
    void read(std::int64_t position, std::span<const FrameSource::Stretch> stretches);

private:
    /// Frames that were made at one go.
    struct Excerpt {
        /// Of the first frame.
        std::int64_t position = 0;
        std::vector<float> samples;
        /// How many samples were read from it, of all channels together.
        std::size_t read = 0;
    };

    void readOne(std::size_t channel, std::int64_t position, std::span<float> samples)
        AUDLMD_REQUIRES(mutex_);
    /// Whether each channel is there, and none twice.
    bool areAllChannels(std::span<const FrameSource::Stretch> stretches) const;
    /// Makes the frames piece by piece, and takes each apart while it lies in the processor's caches.
    void split(std::int64_t position, std::span<const FrameSource::Stretch> stretches)
        AUDLMD_REQUIRES(mutex_);
    /// Null: none holds all the frames.
    Excerpt* kept(std::int64_t position, std::size_t frames) AUDLMD_REQUIRES(mutex_);
    Excerpt& add(std::int64_t position, std::size_t frames) AUDLMD_REQUIRES(mutex_);
    Excerpt take(const std::deque<Excerpt>::iterator& unwanted) AUDLMD_REQUIRES(mutex_);

    const std::size_t channels_;
    const Layout layout_;
    const Limits limits_;
    Mutex mutex_;
    /// Guarded, so that it is called on one thread at a time.
    const Make make_ AUDLMD_GUARDED_BY(mutex_);
    /// The oldest comes first.
    std::deque<Excerpt> kept_ AUDLMD_GUARDED_BY(mutex_);
    std::size_t keptSamples_ AUDLMD_GUARDED_BY(mutex_) = 0;
    /// Of frames that are taken apart.
    std::vector<float> piece_ AUDLMD_GUARDED_BY(mutex_);
};

} // namespace audlmd
