#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <span>
#include <utility>
#include <vector>

namespace audlmd {

/// Several channels that are faster to read together than one after another, such as those of a file, which
/// stores them side by side. The source of each channel names the frames, see SampleSource::inFrames(); the
/// cache then reads the channels that it holds of one recording at one go.
class FrameSource {
public:
    /// Samples of one channel, counted from 0, each to be multiplied by a factor.
    struct Stretch {
        std::size_t channel = 0;
        float factor = 1.0F;
        std::span<float> samples;
    };

    virtual ~FrameSource() = default;

    /// Fills stretches of one length, from frame `position` on. Two may be of one channel. Threads and errors
    /// as with SampleSource::read().
    virtual void read(std::int64_t position, std::span<const Stretch> stretches) = 0;
};

/// Where the samples of one material, a single channel, come from. Derive from this class to play from
/// something other than sound files and memory.
///
/// The loader threads of a cache call every operation, several of them at the same time. A source may be
/// destroyed on any thread that lets go of its last segment, which may be a reader's.
/// \snippet cache.cpp source
class SampleSource {
public:
    virtual ~SampleSource() = default;

    /// In samples. Must never change.
    virtual std::int64_t length() const = 0;

    /// Fills `samples` with the samples from `position` on. The range always lies inside 0 to length().
    /// Throws if the source cannot fill all of it. The cache keeps the text of a std::exception for the
    /// user; the whole segment then renders as silence.
    virtual void read(std::int64_t position, std::span<float> samples) = 0;

    /// The address of something that only one read can use at a time, such as an open file. Null, the
    /// default, if a read needs nothing to itself. The cache reads sources with the same resource one after
    /// another, while other loader threads serve other sources. Must never change.
    virtual const void* exclusiveResource() const { return nullptr; }

    /// Which of the channels of a FrameSource the samples are, and what they are multiplied by.
    struct InFrames {
        /// Null: the channel is read alone.
        FrameSource* frames = nullptr;
        std::size_t channel = 0;
        float factor = 1.0F;
    };
    /// Nothing, the default, unless the frames may be read in place of this source. Must never change. The
    /// frames must live as long as the source; sources of one FrameSource have one length.
    virtual InFrames inFrames() const { return {}; }
};

/// Samples in memory. Several threads may read at the same time.
class MemorySource final : public SampleSource {
public:
    explicit MemorySource(std::vector<float> samples) : samples_(std::move(samples)) {}

    std::int64_t length() const override { return static_cast<std::int64_t>(samples_.size()); }
    void read(std::int64_t position, std::span<float> samples) override {
        std::copy_n(samples_.begin() + position, samples.size(), samples.begin());
    }

private:
    std::vector<float> samples_;
};

} // namespace audlmd
